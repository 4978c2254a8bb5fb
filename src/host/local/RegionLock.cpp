#include "host/local/RegionLock.h"

#include "host/local/HostErrors.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sstream>
#include <sys/file.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace brevant::host::local {

namespace {
constexpr std::chrono::seconds kDefaultWait{30};
constexpr std::chrono::milliseconds kPollInterval{100};

/// What the holder wrote into the lock file, on one line.
std::string holderOf(int descriptor)
{
    std::string text;
    char buffer[512];
    off_t offset = 0;
    ssize_t got = 0;
    while (text.size() < 4096 && (got = pread(descriptor, buffer, sizeof buffer, offset)) > 0) {
        text.append(buffer, static_cast<std::size_t>(got));
        offset += got;
    }
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) {
        text.pop_back();
    }
    for (char& c : text) {
        if (c == '\n') {
            c = ' ';
        }
    }
    return text;
}

std::string secondsText(std::chrono::milliseconds wait)
{
    std::ostringstream text;
    text << static_cast<double>(wait.count()) / 1000.0;
    return text.str();
}

void recordHolder(int descriptor, const std::string& command)
{
    const std::string text = "process " + std::to_string(getpid()) + " (" + command + ")\n";
    // The record only explains a wait; the lock itself does not depend on it.
    if (ftruncate(descriptor, 0) == 0) {
        [[maybe_unused]] const ssize_t written = pwrite(descriptor, text.data(), text.size(), 0);
    }
}
} // namespace

RegionLock RegionLock::acquire(const std::filesystem::path& regionFolder,
                               const std::string& region, const std::string& command,
                               std::chrono::milliseconds wait)
{
    const std::filesystem::path file = regionFolder / kFileName;
    // Close-on-exec: a program this process starts must not keep the region claimed.
    const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (descriptor < 0) {
        hostError(HostError::MissingFile, "cannot open the lock file " + file.string() +
                                              " of region " + region + ": " +
                                              std::strerror(errno));
    }
    RegionLock lock(descriptor);
    const auto deadline = std::chrono::steady_clock::now() + wait;
    while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            hostError(HostError::MissingFile, "cannot lock " + file.string() + " of region " +
                                                  region + ": " + std::strerror(errno));
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            const std::string holder = holderOf(descriptor);
            hostError(HostError::RegionInUse,
                      "region " + region + " is in use by " +
                          (holder.empty() ? "another process" : holder) + "; gave up after " +
                          secondsText(wait) + " s (set " + kWaitVariable + " to wait longer)");
        }
        std::this_thread::sleep_for(kPollInterval);
    }
    recordHolder(descriptor, command);
    return lock;
}

std::chrono::milliseconds RegionLock::defaultWait()
{
    const char* text = std::getenv(kWaitVariable);
    if (text && *text) {
        char* end = nullptr;
        const double seconds = std::strtod(text, &end);
        if (end && *end == '\0' && seconds >= 0.0) {
            return std::chrono::milliseconds(static_cast<int64_t>(seconds * 1000.0));
        }
    }
    return kDefaultWait;
}

RegionLock::RegionLock(RegionLock&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

RegionLock& RegionLock::operator=(RegionLock&& other) noexcept
{
    if (this != &other) {
        release();
        m_descriptor = std::exchange(other.m_descriptor, -1);
    }
    return *this;
}

RegionLock::~RegionLock()
{
    release();
}

void RegionLock::release() noexcept
{
    if (m_descriptor < 0) {
        return;
    }
    // Closing the descriptor ends the lock. The record goes first, but only while the lock is
    // ours: a claim that was never granted must not erase the holder's.
    if (flock(m_descriptor, LOCK_EX | LOCK_NB) == 0) {
        [[maybe_unused]] const int cleared = ftruncate(m_descriptor, 0);
    }
    close(m_descriptor);
    m_descriptor = -1;
}

} // namespace brevant::host::local
