#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace brevant::app {

/// `brevant demo [--out DIR] [--size small|medium|large]`: builds a sample host root under DIR
/// and runs one typical session on it the way the desktop host does, through the dispatch
/// layer: clip the four site-condition maps, draw each, add the region's default maps, run the
/// user-defined and probabilistic analyses of the tract table and draw tract pga. Each map
/// becomes a PNG page with its legend in DIR; `demo.json` lists them with the geographic
/// extent and pixel rectangle of each map frame. A summary goes to `out`, progress to `err`.
int runDemo(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
extern const char* const kDemoUsage;

} // namespace brevant::app
