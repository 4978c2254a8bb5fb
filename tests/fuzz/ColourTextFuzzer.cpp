// The colour text check reads any text without running past it, and accepts only what reads
// back as three components from 0 to 255.
#include "host/local/JsonFiles.h"

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // A copy of exactly the input's length, so a read past its end is caught.
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (!brevant::host::local::isColourText(text)) {
        return 0;
    }
    std::istringstream in(text);
    int components = 0;
    for (std::string part; std::getline(in, part, ',');) {
        const int value = std::atoi(part.c_str());
        if (value < 0 || value > 255) {
            std::abort();
        }
        ++components;
    }
    if (components != 3) {
        std::abort();
    }
    return 0;
}
