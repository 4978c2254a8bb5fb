#include "support/FullDisk.h"

#include "platform/tabular/SqliteDatabase.h"

#include <atomic>
#include <sqlite3.h>
#include <stdexcept>

namespace brevant::test {
namespace {

// One shim at a time: SQLite calls back through plain functions, so the state is global.
struct DiskState {
    sqlite3_vfs* base = nullptr;
    sqlite3_vfs shim{};
    std::atomic<bool> armed{false};
    std::atomic<int64_t> allowance{0};
    std::atomic<int64_t> writes{0};
    std::atomic<bool> refused{false};
};
DiskState g_disk;

// Our file record, with the default file system's record right behind it.
struct ShimFile {
    sqlite3_file base;
    sqlite3_file* inner() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};
ShimFile* shim(sqlite3_file* file)
{
    return reinterpret_cast<ShimFile*>(file);
}
sqlite3_file* inner(sqlite3_file* file)
{
    return shim(file)->inner();
}

int shimWrite(sqlite3_file* file, const void* data, int amount, sqlite3_int64 offset)
{
    sqlite3_file* real = inner(file);
    if (g_disk.armed && g_disk.allowance.fetch_sub(1) <= 0) {
        // A full disk still takes writes into space a file already has.
        sqlite3_int64 size = 0;
        if (real->pMethods->xFileSize(real, &size) != SQLITE_OK || offset + amount > size) {
            g_disk.refused = true;
            return SQLITE_FULL;
        }
    }
    ++g_disk.writes;
    return real->pMethods->xWrite(real, data, amount, offset);
}

int shimClose(sqlite3_file* file)
{
    sqlite3_file* real = inner(file);
    return real->pMethods ? real->pMethods->xClose(real) : SQLITE_OK;
}

int shimRead(sqlite3_file* f, void* data, int amount, sqlite3_int64 offset)
{
    return inner(f)->pMethods->xRead(inner(f), data, amount, offset);
}
int shimTruncate(sqlite3_file* f, sqlite3_int64 size)
{
    return inner(f)->pMethods->xTruncate(inner(f), size);
}
int shimSync(sqlite3_file* f, int flags)
{
    return inner(f)->pMethods->xSync(inner(f), flags);
}
int shimFileSize(sqlite3_file* f, sqlite3_int64* size)
{
    return inner(f)->pMethods->xFileSize(inner(f), size);
}
int shimLock(sqlite3_file* f, int level)
{
    return inner(f)->pMethods->xLock(inner(f), level);
}
int shimUnlock(sqlite3_file* f, int level)
{
    return inner(f)->pMethods->xUnlock(inner(f), level);
}
int shimCheckReservedLock(sqlite3_file* f, int* out)
{
    return inner(f)->pMethods->xCheckReservedLock(inner(f), out);
}
int shimFileControl(sqlite3_file* f, int op, void* arg)
{
    return inner(f)->pMethods->xFileControl(inner(f), op, arg);
}
int shimSectorSize(sqlite3_file* f)
{
    return inner(f)->pMethods->xSectorSize(inner(f));
}
int shimDeviceCharacteristics(sqlite3_file* f)
{
    return inner(f)->pMethods->xDeviceCharacteristics(inner(f));
}
int shimShmMap(sqlite3_file* f, int page, int size, int extend, void volatile** out)
{
    return inner(f)->pMethods->xShmMap(inner(f), page, size, extend, out);
}
int shimShmLock(sqlite3_file* f, int offset, int n, int flags)
{
    return inner(f)->pMethods->xShmLock(inner(f), offset, n, flags);
}
void shimShmBarrier(sqlite3_file* f)
{
    inner(f)->pMethods->xShmBarrier(inner(f));
}
int shimShmUnmap(sqlite3_file* f, int deleteFlag)
{
    return inner(f)->pMethods->xShmUnmap(inner(f), deleteFlag);
}
int shimFetch(sqlite3_file* f, sqlite3_int64 offset, int amount, void** out)
{
    return inner(f)->pMethods->xFetch(inner(f), offset, amount, out);
}
int shimUnfetch(sqlite3_file* f, sqlite3_int64 offset, void* page)
{
    return inner(f)->pMethods->xUnfetch(inner(f), offset, page);
}

const sqlite3_io_methods kShimMethods = {
    3,
    shimClose,
    shimRead,
    shimWrite,
    shimTruncate,
    shimSync,
    shimFileSize,
    shimLock,
    shimUnlock,
    shimCheckReservedLock,
    shimFileControl,
    shimSectorSize,
    shimDeviceCharacteristics,
    shimShmMap,
    shimShmLock,
    shimShmBarrier,
    shimShmUnmap,
    shimFetch,
    shimUnfetch,
};

int shimOpen(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags)
{
    sqlite3_file* real = inner(file);
    real->pMethods = nullptr;
    const int rc = g_disk.base->xOpen(g_disk.base, name, real, flags, outFlags);
    // SQLite calls xClose only when pMethods is set, and it is set exactly when the inner
    // file needs closing.
    file->pMethods = real->pMethods ? &kShimMethods : nullptr;
    return rc;
}

} // namespace

FullDisk::FullDisk()
{
    if (g_disk.base) {
        throw std::logic_error("FullDisk: one at a time");
    }
    sqlite3_initialize();
    g_disk.base = sqlite3_vfs_find(nullptr);
    g_disk.shim = *g_disk.base;
    g_disk.shim.zName = "brevant-full-disk";
    g_disk.shim.szOsFile = static_cast<int>(sizeof(ShimFile)) + g_disk.base->szOsFile;
    g_disk.shim.xOpen = shimOpen;
    // Every other call (delete, access, full path, time, …) is the default file system's own.
    g_disk.armed = false;
    g_disk.writes = 0;
    g_disk.refused = false;
    sqlite3_vfs_register(&g_disk.shim, 1);
}

FullDisk::~FullDisk()
{
    sqlite3_vfs_unregister(&g_disk.shim);
    sqlite3_vfs_register(g_disk.base, 1);
    g_disk.base = nullptr;
}

void FullDisk::fillAfter(int64_t writes)
{
    g_disk.allowance = writes;
    g_disk.refused = false;
    g_disk.armed = true;
}

void FullDisk::free()
{
    g_disk.armed = false;
}

bool FullDisk::refused() const
{
    return g_disk.refused;
}

int64_t FullDisk::writes() const
{
    return g_disk.writes;
}

int fillAtEveryStage(FullDisk& disk, const std::function<void()>& operation,
                     const std::function<void()>& afterFailure)
{
    int failures = 0;
    for (int64_t allowance = 0;; allowance += allowance / 2 + 1) {
        disk.fillAfter(allowance);
        try {
            operation();
        } catch (const std::exception&) {
            // What the operation reports is its own test's business; here only what it leaves.
        }
        disk.free();
        if (!disk.refused()) {
            return failures;
        }
        ++failures;
        afterFailure();
    }
}

std::vector<std::string> unsoundDatabases(const std::filesystem::path& folder)
{
    std::vector<std::string> unsound;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".mdb" && extension != ".gpkg" && extension != ".sqlite") {
            continue;
        }
        std::string answer;
        try {
            // Opened for writing, as the next user would, so a journal a failed write left
            // behind is rolled back before the check.
            platform::tabular::SqliteDatabase db(
                entry.path().string(), platform::tabular::SqliteDatabase::Mode::ReadWrite);
            platform::tabular::SqliteDatabase::Statement check(db, "PRAGMA integrity_check");
            while (check.step()) {
                answer += (answer.empty() ? "" : "; ") + check.text(0);
            }
        } catch (const std::exception& e) {
            answer = e.what();
        }
        if (answer != "ok") {
            unsound.push_back(entry.path().filename().string() + ": " + answer);
        }
    }
    return unsound;
}

} // namespace brevant::test
