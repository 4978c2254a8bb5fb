#include "context/StudyRegionContext.h"

namespace brevant::context {

StudyRegionContext& studyRegionContext()
{
    static StudyRegionContext context;
    return context;
}

void resetStudyRegionContext()
{
    studyRegionContext() = StudyRegionContext{};
}

} // namespace brevant::context
