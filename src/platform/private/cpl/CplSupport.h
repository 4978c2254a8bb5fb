#pragma once

// Private to the platform: ownership of what GDAL's portability library hands out, and the
// capture of its errors. Kept apart from the GDAL wrappers so that geometry can use it too.

#include <cpl_conv.h>
#include <cpl_error.h>
#include <memory>
#include <string>

namespace brevant::platform::cpl {

struct CplFree {
    void operator()(void* memory) const { CPLFree(memory); }
};
/// Memory GDAL allocated and the caller must free: exported WKT, arrays of match scores.
template <class T = char> using CplPtr = std::unique_ptr<T, CplFree>;

/// Captures GDAL's errors for the lifetime of the scope instead of printing them; the last
/// failure becomes the message of a PlatformError.
class ErrorScope {
public:
    ErrorScope();
    ~ErrorScope();
    ErrorScope(const ErrorScope&) = delete;
    ErrorScope& operator=(const ErrorScope&) = delete;

    /// The last failure captured, or "" when none.
    const std::string& lastMessage() const { return m_message; }
    int lastNumber() const { return m_number; }
    /// Throws PlatformError(GdalBase + number, "GDAL", what + ": " + last message); the number
    /// is CPLE_AppDefined when GDAL failed without saying why.
    [[noreturn]] void fail(const std::string& what) const;

private:
    static void CPL_STDCALL handler(CPLErr level, CPLErrorNum number, const char* message);

    std::string m_message;
    int m_number = 0;
};

} // namespace brevant::platform::cpl
