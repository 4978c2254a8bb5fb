#pragma once

#include <chrono>
#include <filesystem>
#include <string>

namespace brevant::host::local {

/// One process's exclusive claim on a study region, held while the object lives. The claim is
/// an advisory lock on the open file `region.lock` in the region folder, so the operating
/// system ends it with the process however the process ends; the file also records the
/// holder's process id and command line for the message of a process that has to wait.
/// Within one process two claims of one region exclude each other too.
class RegionLock {
public:
    /// Name of the lock file in a region folder.
    static constexpr const char* kFileName = "region.lock";
    /// Environment variable with the seconds to wait for a region (fractions allowed).
    static constexpr const char* kWaitVariable = "BREVANT_REGION_WAIT";

    /// Claims `regionFolder` (which must exist) for `command`, waiting up to `wait` for the
    /// process that holds it. Throws a host error (RegionInUse) naming the region, the holder's
    /// process id and command when the wait runs out, and MissingFile when the lock file cannot
    /// be opened.
    static RegionLock acquire(const std::filesystem::path& regionFolder, const std::string& region,
                              const std::string& command, std::chrono::milliseconds wait);
    /// How long to wait for a region: kWaitVariable when set to a number, else 30 seconds.
    static std::chrono::milliseconds defaultWait();

    RegionLock(RegionLock&& other) noexcept;
    RegionLock& operator=(RegionLock&& other) noexcept;
    RegionLock(const RegionLock&) = delete;
    RegionLock& operator=(const RegionLock&) = delete;
    ~RegionLock();

private:
    explicit RegionLock(int descriptor) : m_descriptor(descriptor) {}
    void release() noexcept;

    int m_descriptor = -1;
};

} // namespace brevant::host::local
