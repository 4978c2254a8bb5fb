#include "host/HazardCodes.h"

#include "platform/automation/CaseInsensitive.h"

namespace brevant::host {

namespace {
using Group = HazardCode::Group;
using Value = HazardCode::Value;

HazardCode groundMotion(std::string code, std::string description)
{
    return {std::move(code), std::move(description), Group::GroundMotion, "", "", "paramvalue",
            Value::Real, 0};
}
} // namespace

const std::vector<HazardCode>& hazardCodes()
{
    static const std::vector<HazardCode> codes{
        {"SOIL", "soil (site) class, letters A to E", Group::Site, "eqsrsoil", "RegionBndry.mdb",
         "Type", Value::Text, 8, std::nullopt, "ABCDE"},
        {"LIQF", "liquefaction susceptibility category, 0 to 5", Group::Site, "eqsrlqf",
         "RegionBndry.mdb", "Type", Value::Category, 12, std::pair(0, 5)},
        {"LAND", "landslide susceptibility category, 0 to 10", Group::Site, "eqsrlnd",
         "RegionBndry.mdb", "Type", Value::Category, 10, std::pair(0, 10)},
        {"WATR", "depth to ground water", Group::Site, "eqsrwdepth", "RegionBndry.mdb", "Type",
         Value::Real, 2},
        {"DAMF", "dam-failure inundation", Group::Inundation, "srdamind", "Inundation.mdb", "type",
         Value::Text, 14},
        {"TSUN", "tsunami inundation", Group::Inundation, "srtsuind", "Inundation.mdb", "type",
         Value::Text, 15},
        {"SEIC", "seiche inundation", Group::Inundation, "srseiind", "Inundation.mdb", "type",
         Value::Text, 16},
        {"LEVF", "levee-failure inundation", Group::Inundation, "srlevind", "Inundation.mdb",
         "type", Value::Text, 17},
        groundMotion("PGAM", "peak ground acceleration"),
        groundMotion("PGVM", "peak ground velocity"),
        groundMotion("SA03", "spectral acceleration at 0.3 s"),
        groundMotion("SA10", "spectral acceleration at 1.0 s"),
        groundMotion("STGD", "ground deformation by liquefaction settlement"),
        groundMotion("LSGD", "ground deformation by lateral spreading"),
        groundMotion("LFPR", "probability of liquefaction"),
        groundMotion("LDGD", "ground deformation by landslide"),
        groundMotion("LDPR", "probability of landslide"),
        groundMotion("SRGD", "ground deformation by surface fault rupture"),
        groundMotion("SRPR", "probability of surface fault rupture"),
    };
    return codes;
}

std::optional<HazardCode> findHazardCode(std::string_view code)
{
    for (const auto& entry : hazardCodes()) {
        if (platform::automation::equalsIgnoreCase(entry.code, code)) {
            return entry;
        }
    }
    return std::nullopt;
}

const std::array<HazardResultField, 11>& hazardResultFields()
{
    static constexpr std::array<HazardResultField, 11> fields{{
        {"PGAM", "pga"},
        {"PGVM", "pgv"},
        {"SA03", "sa03"},
        {"SA10", "sa10"},
        {"STGD", "LqfSettlPGD"},
        {"LSGD", "LqfSprPGD"},
        {"LFPR", "LqfProb"},
        {"LDGD", "LndPGD"},
        {"LDPR", "LndProb"},
        {"SRGD", "SufFltRuptPGD"},
        {"SRPR", "SurfFltRuptProb"},
    }};
    return fields;
}

} // namespace brevant::host
