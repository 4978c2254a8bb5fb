#pragma once

#include <string>

namespace brevant::test {

/// What a run of the brevant executable printed on standard output, and its exit status (-1
/// when it did not exit normally).
struct Outcome {
    int status = -1;
    std::string out;
};

/// Runs the real brevant executable with `arguments` (shell words), as a user would; standard
/// error is discarded and standard input empty.
Outcome runBrevant(const std::string& arguments);

} // namespace brevant::test
