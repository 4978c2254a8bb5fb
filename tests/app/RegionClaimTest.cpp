#include "host/local/RegionLock.h"
#include "support/Executable.h"
#include "support/HostFixture.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace brevant::app {
namespace {

using json = nlohmann::ordered_json;
using host::local::RegionLock;

/// Runs of `brevant script` on the fixture's region, which waits briefly for the region.
class RegionClaim : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        setenv(RegionLock::kWaitVariable, "0.3", 1);
        m_script = (root() / "script.jsonl").string();
        std::ofstream(m_script) << R"({"new": "Brevant.EqPolyGon", "as": "pg"})" << "\n";
    }
    void TearDown() override
    {
        unsetenv(RegionLock::kWaitVariable);
        HostFixture::TearDown();
    }

    /// The first output line of a script run.
    std::pair<int, json> runScript() const
    {
        const test::Outcome run = test::runBrevant("script --host " + root().string() + " " +
                                                   m_script);
        const auto end = run.out.find('\n');
        return {run.status, json::parse(run.out.substr(0, end), nullptr, false)};
    }

    std::string m_script;
};

TEST_F(RegionClaim, ASecondProcessFailsNamingTheHolderAndRunsOnceItIsFree)
{
    {
        const RegionLock held = RegionLock::acquire(regionFolder(), "Testville", "brevant test",
                                                    std::chrono::milliseconds(0));
        const auto [status, line] = runScript();
        EXPECT_EQ(status, 1);
        ASSERT_TRUE(line.is_object()) << line;
        EXPECT_FALSE(line.at("ok").get<bool>());
        EXPECT_EQ(line.at("error").at("description").get<std::string>().rfind(
                      "region Testville is in use by process " + std::to_string(getpid()) +
                          " (brevant test); gave up after 0.3 s",
                      0),
                  0u)
            << line;
    }
    const auto [status, line] = runScript();
    EXPECT_EQ(status, 0) << line;
}

TEST_F(RegionClaim, ARegionIsFreeAgainWhenItsHolderIsKilled)
{
    // A script run that holds the region while it waits for its first statement.
    int input[2];
    ASSERT_EQ(pipe(input), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_addclose(&actions, input[1]);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const std::string host = root().string();
    std::vector<std::string> words{BREVANT_EXECUTABLE, "script", "--host", host, "-"};
    std::vector<char*> argv;
    for (auto& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    pid_t holder = 0;
    const int spawned = posix_spawn(&holder, BREVANT_EXECUTABLE, &actions, nullptr, argv.data(),
                                    environ);
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    ASSERT_EQ(spawned, 0);

    const std::string record = "process " + std::to_string(holder) + " (brevant script --host ";
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (readFile(std::filesystem::path(regionFolder()) / RegionLock::kFileName).rfind(record, 0) !=
               0 &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const auto [busyStatus, busy] = runScript();
    EXPECT_EQ(busyStatus, 1);
    EXPECT_NE(busy.dump().find("is in use by " + record), std::string::npos) << busy;

    kill(holder, SIGKILL);
    int status = 0;
    waitpid(holder, &status, 0);
    close(input[1]);
    const auto [freeStatus, free] = runScript();
    EXPECT_EQ(freeStatus, 0) << free;
}

} // namespace
} // namespace brevant::app
