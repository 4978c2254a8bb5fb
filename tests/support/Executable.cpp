#include "support/Executable.h"

#include <array>
#include <cstdio>
#include <sys/wait.h>

namespace brevant::test {

Outcome runBrevant(const std::string& arguments)
{
    const std::string command =
        std::string(BREVANT_EXECUTABLE) + " " + arguments + " 2>/dev/null </dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    Outcome run;
    if (!pipe) {
        return run;
    }
    std::array<char, 4096> buffer{};
    while (std::fgets(buffer.data(), buffer.size(), pipe)) {
        run.out += buffer.data();
    }
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

} // namespace brevant::test
