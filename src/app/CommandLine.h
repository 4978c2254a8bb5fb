#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace brevant::app {

/// The brevant command: parses the arguments, runs the command and returns the exit status
/// (0 success, 1 a statement or call failed, 2 a usage error). Results go to `out`, usage
/// errors and progress to `err`.
int runCommandLine(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
                   std::ostream& err);

} // namespace brevant::app
