#include "BrevantClasses.h"

#include "datamaps/EqDataMaps.h"
#include "datamaps/EqPolyGon.h"
#include "exchange/EqOpenDocument.h"
#include "exchange/RegionExpImp.h"
#include "inventory/EqPoint.h"
#include "inventory/EqPolyLine.h"
#include "layout/EqCustomMap.h"
#include "selection/EQMapSelDlg.h"
#include "thematic/EqThmMap.h"

namespace brevant {

namespace {
template <class T> void add(platform::automation::ClassRegistry& registry, const char* progId)
{
    registry.add(progId, [] { return std::make_shared<T>(); });
}
} // namespace

void registerClasses(platform::automation::ClassRegistry& registry)
{
    add<inventory::EqPoint>(registry, "Brevant.EqPoint");
    add<inventory::EqPolyLine>(registry, "Brevant.EqPolyLine");
    add<datamaps::EqDataMaps>(registry, "Brevant.EqDataMaps");
    add<datamaps::EqPolyGon>(registry, "Brevant.EqPolyGon");
    add<layout::EqCustomMap>(registry, "Brevant.EqCustomMap");
    add<selection::EQMapSelDlg>(registry, "Brevant.EQMapSelDlg");
    add<exchange::RegionExpImp>(registry, "Brevant.RegionExpImp");
    add<exchange::EqOpenDocument>(registry, "Brevant.EqOpenDocument");
    add<thematic::EqThmMap>(registry, "Brevant.EqThmMap");
}

const platform::automation::ClassRegistry& classes()
{
    static const platform::automation::ClassRegistry registry = [] {
        platform::automation::ClassRegistry r;
        registerClasses(r);
        return r;
    }();
    return registry;
}

} // namespace brevant
