#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace brevant::test {

/// Makes every SQLite database of the process, GDAL's GeoPackages included, behave as if the
/// disk filled up: while armed, after a given number of writes any write that would grow a file
/// fails with SQLITE_FULL. Registered as SQLite's default file system for its lifetime; one at
/// a time.
class FullDisk {
public:
    FullDisk();
    ~FullDisk();
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

    /// Lets `writes` more writes through, then refuses growing ones.
    void fillAfter(int64_t writes);
    /// Frees the disk again.
    void free();
    /// Whether a write was refused since the last fillAfter.
    bool refused() const;
    /// Writes let through since the object was made.
    int64_t writes() const;
};

/// Runs `operation` with the disk filling up after ever more writes (0, 1, 2, 4, 7, 11, …)
/// until a run completes without a refused write, calling `afterFailure` with the disk free
/// again after each run that was refused one. An exception the operation throws is expected
/// and dropped. Returns how many runs the full disk cut short.
int fillAtEveryStage(FullDisk& disk, const std::function<void()>& operation,
                     const std::function<void()>& afterFailure);

/// The databases (GeoPackages and SQLite files) in `folder` whose integrity check fails, each
/// with the check's answer; empty when all are sound.
std::vector<std::string> unsoundDatabases(const std::filesystem::path& folder);

} // namespace brevant::test
