#include "cpl/CplSupport.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

namespace brevant::platform::cpl {

ErrorScope::ErrorScope()
{
    CPLPushErrorHandlerEx(&ErrorScope::handler, this);
}

ErrorScope::~ErrorScope()
{
    CPLPopErrorHandler();
}

void CPL_STDCALL ErrorScope::handler(CPLErr level, CPLErrorNum number, const char* message)
{
    auto* scope = static_cast<ErrorScope*>(CPLGetErrorHandlerUserData());
    if (scope && level >= CE_Failure) {
        scope->m_message = message ? message : "";
        scope->m_number = number;
    }
}

void ErrorScope::fail(const std::string& what) const
{
    std::string message = what;
    if (!m_message.empty()) {
        message += ": " + m_message;
    }
    const int number = m_number != CPLE_None ? m_number : CPLE_AppDefined;
    throw automation::PlatformError(automation::ErrorNumber::GdalBase + (number & 0xfff), "GDAL",
                                    message);
}

} // namespace brevant::platform::cpl
