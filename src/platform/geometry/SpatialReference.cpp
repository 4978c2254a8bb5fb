#include "platform/geometry/SpatialReference.h"

#include "cpl/CplSupport.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <ogr_spatialref.h>

namespace brevant::platform::geometry {

namespace {

constexpr int Nad83 = 4269;

// EPSG code of a definition: its own authority code, else the one EPSG entry it matches.
int identifyEpsg(OGRSpatialReference& srs)
{
    const auto codeOf = [](const OGRSpatialReference& s) {
        const char* authority = s.GetAuthorityName(nullptr);
        const char* code = s.GetAuthorityCode(nullptr);
        return authority && code && EQUAL(authority, "EPSG") ? std::atoi(code) : 0;
    };
    if (int code = codeOf(srs)) {
        return code;
    }
    int count = 0;
    int* scores = nullptr;
    OGRSpatialReferenceH* found = srs.FindMatches(nullptr, &count, &scores);
    const cpl::CplPtr<int> confidence(scores);
    const std::unique_ptr<OGRSpatialReferenceH, decltype(&OSRFreeSRSArray)> matches(
        found, &OSRFreeSRSArray);
    if (count > 0 && (confidence.get()[0] == 100 || (count == 1 && confidence.get()[0] >= 90))) {
        return codeOf(*OGRSpatialReference::FromHandle(matches.get()[0]));
    }
    return 0;
}

std::string nameOf(const OGRSpatialReference& srs, int epsg)
{
    if (epsg == Nad83) {
        return "GCS_North_American_1983";
    }
    if (srs.IsGeographic()) {
        std::string datum = srs.GetAttrValue("DATUM") ? srs.GetAttrValue("DATUM") : "";
        if (datum.starts_with("D_")) {
            datum.erase(0, 2);
        }
        std::replace(datum.begin(), datum.end(), ' ', '_');
        return "GCS_" + datum;
    }
    return srs.GetName() ? srs.GetName() : "";
}

std::string wktOf(const OGRSpatialReference& srs)
{
    char* exported = nullptr;
    OGRErr status = srs.exportToWkt(&exported);
    cpl::CplPtr<> text(exported);
    // Some systems have no WKT1 form; WKT2 keeps them.
    if (status != OGRERR_NONE || !text || !*text) {
        exported = nullptr;
        const char* options[] = {"FORMAT=WKT2_2018", nullptr};
        srs.exportToWkt(&exported, options);
        text.reset(exported);
    }
    return text ? std::string(text.get()) : std::string();
}

// Reading a definition queries the PROJ database (and matching it, a scan of it); every
// feature class opened asks again for the same few systems.
template <class Key> class Cache {
public:
    template <class Make> SpatialReference get(const Key& key, Make make)
    {
        {
            std::lock_guard lock(m_mutex);
            if (auto found = m_entries.find(key); found != m_entries.end()) {
                return found->second;
            }
        }
        SpatialReference made = make();
        std::lock_guard lock(m_mutex);
        return m_entries.emplace(key, std::move(made)).first->second;
    }

private:
    std::mutex m_mutex;
    std::map<Key, SpatialReference> m_entries;
};

} // namespace

SpatialReference SpatialReference::fromEpsg(int code)
{
    static Cache<int> cache;
    return cache.get(code, [code] {
        cpl::ErrorScope errors;
        OGRSpatialReference srs;
        srs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
        if (srs.importFromEPSG(code) != OGRERR_NONE) {
            errors.fail("unknown coordinate system EPSG:" + std::to_string(code));
        }
        SpatialReference result;
        result.m_epsg = code;
        result.m_geographic = srs.IsGeographic();
        result.m_name = nameOf(srs, code);
        result.m_wkt = wktOf(srs);
        return result;
    });
}

SpatialReference SpatialReference::fromWkt(const std::string& wkt)
{
    static Cache<std::string> cache;
    return cache.get(wkt, [&wkt] {
        cpl::ErrorScope errors;
        OGRSpatialReference srs;
        srs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
        if (wkt.empty() || srs.SetFromUserInput(wkt.c_str()) != OGRERR_NONE) {
            errors.fail("cannot read the coordinate system '" + wkt.substr(0, 80) + "'");
        }
        SpatialReference result;
        result.m_epsg = identifyEpsg(srs);
        result.m_geographic = srs.IsGeographic();
        result.m_name = nameOf(srs, result.m_epsg);
        result.m_wkt = wktOf(srs);
        if (result.m_wkt.empty()) {
            result.m_wkt = wkt;
        }
        return result;
    });
}

bool SpatialReference::sameAs(const SpatialReference& other) const
{
    if (isUnknown() || other.isUnknown()) {
        return isUnknown() && other.isUnknown();
    }
    if (m_epsg != 0 && other.m_epsg != 0) {
        return m_epsg == other.m_epsg;
    }
    if (m_wkt == other.m_wkt) {
        return true;
    }
    cpl::ErrorScope errors;
    OGRSpatialReference a;
    OGRSpatialReference b;
    if (a.importFromWkt(m_wkt.c_str()) != OGRERR_NONE ||
        b.importFromWkt(other.m_wkt.c_str()) != OGRERR_NONE) {
        return false;
    }
    const char* options[] = {"IGNORE_DATA_AXIS_TO_SRS_AXIS_MAPPING=YES", nullptr};
    return a.IsSame(&b, options);
}

} // namespace brevant::platform::geometry
