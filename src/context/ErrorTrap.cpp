#include "context/ErrorTrap.h"

#include "context/EqErrorhandle.h"

namespace brevant::context {

platform::automation::AutomationError recordError(std::string_view tag, int32_t code,
                                                  std::exception_ptr error)
{
    const auto caught = platform::automation::toAutomationError(error);
    std::string source = caught.source();
    int32_t number = caught.number();
    std::string message(tag);
    const std::string description = caught.description();
    WriteErrorRecord(number, source, description, message, code);
    return platform::automation::AutomationError(number, source, message);
}

} // namespace brevant::context
