#pragma once

#include "platform/geometry/ShapeType.h"

#include <cstdint>
#include <memory>
#include <string>

namespace brevant::platform::automation {
class Variant;
}
namespace brevant::platform::geodatabase {
class FeatureClass;
}

namespace brevant::context {

/// What the IsValid checks report in IsGeoDB.
namespace CandidateResult {
inline constexpr int16_t NotOpened = 0;
inline constexpr int16_t Valid = 1;
inline constexpr int16_t WrongShapeType = -1;
} // namespace CandidateResult

/// A class of a personal geodatabase offered by the user. Only a personal geodatabase will do:
/// a folder of shapefiles or another kind of file is not one, whatever it holds.
std::shared_ptr<platform::geodatabase::FeatureClass>
OpenCandidateClass(const std::string& databasePath, const std::string& className);

/// The feature count as the 32-bit integer the host expects; a count that does not fit is an
/// overflow.
platform::automation::Variant CandidateFeatureCount(const platform::geodatabase::FeatureClass& fc);

/// The IsValid check of the point, line and polygon classes on `TableName` of MDBPath +
/// MDBName: `IsGeoDB` 0 when it cannot be opened, else 1 and, when its shape type is `wanted`,
/// `NRecs` its feature count; -1 for any other shape type. Never raises and logs nothing: an
/// error ends the check with the results as far as they were set.
void CheckCandidateClass(const std::string& MDBName, const std::string& TableName,
                         const std::string& MDBPath, platform::automation::Variant& NRecs,
                         int16_t& IsGeoDB, platform::geometry::ShapeType wanted);

/// Runs a check that reports only through its out-parameters: any error ends it quietly.
template <class Body> void runQuietly(Body&& body)
{
    try {
        body();
    } catch (...) {
        // Nothing to record or raise: the out-parameters tell the caller how far it got.
    }
}

} // namespace brevant::context
