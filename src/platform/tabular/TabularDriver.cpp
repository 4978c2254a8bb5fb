#include "platform/tabular/TabularDriver.h"

#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/tabular/SqliteDriver.h"
#include "platform/tabular/TabularErrors.h"

namespace brevant::platform::tabular {

using automation::PlatformError;

std::unique_ptr<TabularDriver> TabularDriver::open(const std::string& connectionString,
                                                   const std::string& user,
                                                   const std::string& password)
{
    const auto colon = connectionString.find(':');
    // A single letter before the colon is a drive ("C:\..."), not a scheme.
    const std::string scheme =
        colon == std::string::npos || colon < 2 ? std::string() : connectionString.substr(0, colon);
    // Drivers are chosen here, one branch per scheme; a server driver joins as another branch.
    if (automation::equalsIgnoreCase(scheme, "sqlite")) {
        const std::string path = connectionString.substr(colon + 1);
        if (path.empty()) {
            throw PlatformError(automation::ErrorNumber::InvalidArgument, "Connection",
                                "connection string \"" + connectionString +
                                    "\" names no database file");
        }
        // An embedded file has no accounts: user name and password are not checked.
        static_cast<void>(user);
        static_cast<void>(password);
        return std::make_unique<SqliteDriver>(path);
    }
    throw PlatformError(TabularError::UnknownProvider, "Connection",
                        "no database driver for connection string \"" + connectionString + "\": " +
                            (scheme.empty() ? std::string("it names no scheme such as sqlite:")
                                            : "unknown scheme \"" + scheme + "\""));
}

} // namespace brevant::platform::tabular
