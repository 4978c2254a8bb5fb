// The fuzz build leaves out the host and the tabular drivers that a "recordset" argument reads
// through; that argument fails here as it does where no region database is open.
#include "host/HostServices.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/tabular/Connection.h"
#include "platform/tabular/Recordset.h"

namespace {

[[noreturn]] void noRegionDatabase()
{
    throw brevant::platform::automation::AutomationError(
        brevant::platform::automation::ErrorNumber::InvalidProcedureCall, "fuzz",
        "no region database in the fuzz build");
}

} // namespace

namespace brevant::host {

HostServices& hostServices()
{
    noRegionDatabase();
}

} // namespace brevant::host

namespace brevant::platform::tabular {

std::shared_ptr<Connection> Connection::connect(const std::string&, const std::string&,
                                                const std::string&)
{
    noRegionDatabase();
}

std::shared_ptr<Recordset> Connection::open(std::string_view, Recordset::LockType)
{
    noRegionDatabase();
}

void Recordset::setActiveConnection(std::shared_ptr<Connection>)
{
    noRegionDatabase();
}

} // namespace brevant::platform::tabular
