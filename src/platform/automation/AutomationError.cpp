#include "platform/automation/AutomationError.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <cstdio>
#include <filesystem>
#include <new>
#include <system_error>

namespace brevant::platform::automation {

namespace {
constexpr const char* kSource = "Brevant";

int32_t fileErrorNumber(const std::error_code& code)
{
    if (code == std::errc::no_such_file_or_directory) {
        return ErrorNumber::FileNotFound;
    }
    if (code == std::errc::permission_denied || code == std::errc::read_only_file_system ||
        code == std::errc::operation_not_permitted) {
        return ErrorNumber::PermissionDenied;
    }
    if (code == std::errc::not_a_directory) {
        return ErrorNumber::PathNotFound;
    }
    return ErrorNumber::Unspecified;
}
} // namespace

AutomationError::AutomationError(int32_t number, std::string source, std::string description)
    : std::runtime_error(description), m_number(number), m_source(std::move(source)),
      m_description(std::move(description))
{
}

std::string AutomationError::hex() const
{
    return hexNumber(m_number);
}

std::string hexNumber(int32_t number)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<uint32_t>(number));
    return text;
}

AutomationError toAutomationError(std::exception_ptr error)
{
    try {
        std::rethrow_exception(error);
    } catch (const AutomationError& e) {
        return e;
    } catch (const PlatformError& e) {
        return AutomationError(e.number(), e.source(), e.what());
    } catch (const std::bad_alloc&) {
        return AutomationError(ErrorNumber::OutOfMemory, kSource, "Out of memory");
    } catch (const std::filesystem::filesystem_error& e) {
        return AutomationError(fileErrorNumber(e.code()), kSource, e.what());
    } catch (const std::system_error& e) {
        return AutomationError(fileErrorNumber(e.code()), kSource, e.what());
    } catch (const std::overflow_error& e) {
        return AutomationError(ErrorNumber::Overflow, kSource,
                               std::string("Overflow: ") + e.what());
    } catch (const std::out_of_range& e) {
        return AutomationError(ErrorNumber::SubscriptOutOfRange, kSource,
                               std::string("Subscript out of range: ") + e.what());
    } catch (const std::invalid_argument& e) {
        return AutomationError(ErrorNumber::InvalidProcedureCall, kSource,
                               std::string("Invalid procedure call or argument: ") + e.what());
    } catch (const std::exception& e) {
        return AutomationError(ErrorNumber::Unspecified, kSource, e.what());
    } catch (...) {
        return AutomationError(ErrorNumber::Unspecified, kSource, "Unknown error");
    }
}

} // namespace brevant::platform::automation
