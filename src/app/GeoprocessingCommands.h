#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace brevant::app {

/// `brevant transfer`, `brevant clip` and `brevant intersect`: the platform's value transfer
/// and geoprocessor on any vector sources GDAL reads (PATH or PATH:LAYER), writing GeoPackage
/// layers. Progress goes to `err`, a summary line to `out`. Returns the exit status.
int runTransfer(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int runClip(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
int runIntersect(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

extern const char* const kTransferUsage;
extern const char* const kClipUsage;
extern const char* const kIntersectUsage;

} // namespace brevant::app
