#include "geos/GeosContext.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

namespace brevant::platform::geometry::geos {

namespace {

void captureMessage(const char* message, void* userData)
{
    static_cast<std::string*>(userData)->assign(message ? message : "");
}

void ignoreMessage(const char*, void*) {}

GEOSContextHandle_t createContext(std::string* lastError)
{
    GEOSContextHandle_t handle = GEOS_init_r();
    GEOSContext_setErrorMessageHandler_r(handle, &captureMessage, lastError);
    GEOSContext_setNoticeMessageHandler_r(handle, &ignoreMessage, nullptr);
    return handle;
}

// Set once this thread's context is gone; a trivially destructible flag stays readable
// afterwards.
thread_local bool t_finished = false;

struct ThreadContext {
    std::string lastError;
    GEOSContextHandle_t handle = createContext(&lastError);
    GEOSWKBReader* wkbReader = nullptr;
    GEOSWKBWriter* wkbWriter = nullptr;
    GEOSWKTReader* wktReader = nullptr;

    ThreadContext() = default;
    ThreadContext(const ThreadContext&) = delete;
    ThreadContext& operator=(const ThreadContext&) = delete;
    ~ThreadContext()
    {
        if (wkbReader) {
            GEOSWKBReader_destroy_r(handle, wkbReader);
        }
        if (wkbWriter) {
            GEOSWKBWriter_destroy_r(handle, wkbWriter);
        }
        if (wktReader) {
            GEOSWKTReader_destroy_r(handle, wktReader);
        }
        GEOS_finish_r(handle);
        t_finished = true;
    }
};

// Shapes held by statics outlive the main thread's thread_local context; they are released
// through this one, which is never finished.
ThreadContext& teardownContext()
{
    static auto* context = new ThreadContext();
    return *context;
}

ThreadContext& threadContext()
{
    if (t_finished) {
        return teardownContext();
    }
    thread_local ThreadContext context;
    return context;
}

} // namespace

GEOSContextHandle_t context()
{
    return threadContext().handle;
}

void fail(std::string_view what)
{
    ThreadContext& current = threadContext();
    std::string message(what);
    if (!current.lastError.empty()) {
        message += ": " + current.lastError;
        current.lastError.clear();
    }
    throw automation::PlatformError(automation::ErrorNumber::GeosBase + 1, "GEOS", message);
}

bool checkPredicate(char result, std::string_view what)
{
    if (result == 2) {
        fail(what);
    }
    return result == 1;
}

void GeometryDeleter::operator()(GEOSGeometry* geometry) const
{
    GEOSGeom_destroy_r(context(), geometry);
}

void CoordSeqDeleter::operator()(GEOSCoordSequence* sequence) const
{
    GEOSCoordSeq_destroy_r(context(), sequence);
}

void PreparedDeleter::operator()(const GEOSPreparedGeometry* prepared) const
{
    GEOSPreparedGeom_destroy_r(context(), prepared);
}

void BufferDeleter::operator()(void* buffer) const
{
    GEOSFree_r(context(), buffer);
}

GEOSWKBReader* wkbReader()
{
    ThreadContext& current = threadContext();
    if (!current.wkbReader) {
        current.wkbReader = check(GEOSWKBReader_create_r(current.handle), "cannot read WKB");
    }
    return current.wkbReader;
}

GEOSWKBWriter* wkbWriter()
{
    ThreadContext& current = threadContext();
    if (!current.wkbWriter) {
        GEOSWKBWriter* writer =
            check(GEOSWKBWriter_create_r(current.handle), "cannot write WKB");
        GEOSWKBWriter_setByteOrder_r(current.handle, writer, GEOS_WKB_NDR);
        GEOSWKBWriter_setFlavor_r(current.handle, writer, GEOS_WKB_ISO);
        GEOSWKBWriter_setOutputDimension_r(current.handle, writer, 2);
        current.wkbWriter = writer;
    }
    return current.wkbWriter;
}

GEOSWKTReader* wktReader()
{
    ThreadContext& current = threadContext();
    if (!current.wktReader) {
        current.wktReader = check(GEOSWKTReader_create_r(current.handle), "cannot read WKT");
    }
    return current.wktReader;
}

} // namespace brevant::platform::geometry::geos
