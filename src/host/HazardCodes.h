#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brevant::host {

/// A hazard parameter code: the four-letter key by which the host registers the user's maps.
struct HazardCode {
    enum class Group {
        /// Site conditions, clipped into RegionBndry.mdb.
        Site,
        /// Inundation depths, intersected with the tracts into Inundation.mdb.
        Inundation,
        /// Ground motion and ground failure, read where the user's map lies.
        GroundMotion,
    };
    /// How the value field stores its values.
    enum class Value { Text, Category, Real };

    std::string code;
    std::string description;
    Group group;
    /// The class that keeps the region's copy, and its database; empty for ground motion.
    std::string regionClass;
    std::string regionDatabase;
    /// "Type", "type" or "paramvalue".
    std::string valueField;
    Value value;
    /// The thematic map type of the code's map; 0 when the caller gives it.
    int thematicType;
    /// Where the code limits its values: whole categories from first to second, or for a text
    /// code one of `letters` (in any case). Unlimited when neither is set.
    std::optional<std::pair<int, int>> categories = std::nullopt;
    std::string letters = {};
};

/// A ground-motion code and the field of an analysed inventory that takes its map's value.
struct HazardResultField {
    std::string_view code;
    std::string_view resultField;
};

/// All codes, site conditions first, in the order the maps are processed.
const std::vector<HazardCode>& hazardCodes();
/// The code, compared without regard to case; nullopt when it is not a hazard code.
std::optional<HazardCode> findHazardCode(std::string_view code);
/// The ground-motion codes and their result fields in the order an analysis fills them:
/// "PGAM" pga, "PGVM" pgv, "SA03" sa03, "SA10" sa10, "STGD" LqfSettlPGD, "LSGD" LqfSprPGD,
/// "LFPR" LqfProb, "LDGD" LndPGD, "LDPR" LndProb, "SRGD" SufFltRuptPGD, "SRPR"
/// SurfFltRuptProb.
const std::array<HazardResultField, 11>& hazardResultFields();

} // namespace brevant::host
