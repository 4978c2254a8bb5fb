#include "support/ScriptRun.h"

#include "app/CommandLine.h"

#include <sstream>

namespace brevant::test {

std::vector<nlohmann::ordered_json> runScript(const std::filesystem::path& root,
                                              const std::string& script)
{
    std::istringstream in(script);
    std::ostringstream out;
    std::ostringstream err;
    app::runCommandLine({"script", "--host", root.string(), "-"}, in, out, err);
    std::vector<nlohmann::ordered_json> results;
    std::istringstream lines(out.str());
    std::string line;
    while (std::getline(lines, line)) {
        results.push_back(nlohmann::ordered_json::parse(line));
    }
    return results;
}

} // namespace brevant::test
