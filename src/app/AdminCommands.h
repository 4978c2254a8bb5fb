#pragma once

#include "samplehost/SampleSources.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace brevant::app {

/// `brevant host init`, `brevant region create|list`, `brevant map register|list` and
/// `brevant inventory add`: the reference host's administration, which turns a user's own
/// files into a host root. args[0] is the command group ("host", "region", ...), args[1] the
/// action. A summary goes to `out`, progress to `err`. Returns the exit status.
int runAdmin(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

/// `brevant sample-host DIR [--size small|medium|large] [--seed N]`.
int runSampleHost(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
extern const char* const kSampleHostUsage;
/// The sample size named by --size; UsageError for another word.
samplehost::SampleSize sampleSizeNamed(const std::string& name);

/// The usage of a command group, or nullptr for another word.
const char* adminUsage(const std::string& group);

} // namespace brevant::app
