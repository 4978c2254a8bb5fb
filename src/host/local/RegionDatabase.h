#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace brevant::host::local {

/// A region's tabular database `region.sqlite`. This class owns its settings store: values by
/// section and key (both matched without regard to case), kept as text.
class RegionDatabase {
public:
    /// Creates the database with its schema when missing; an existing one keeps its data.
    static void create(const std::filesystem::path& path);

    /// Opens an existing database; throws a host error naming the file when it is missing.
    explicit RegionDatabase(std::filesystem::path path);

    /// Reads a 32-bit integer setting. Throws a host error naming section, key and file when it
    /// is not set, 13 (type mismatch) when the value is not a whole number and 6 (overflow)
    /// when it does not fit in 32 bits.
    int32_t readInt32(const std::string& section, const std::string& key) const;
    /// Reads a text setting; throws a host error when it is not set.
    std::string readString(const std::string& section, const std::string& key) const;
    /// Writes a setting, replacing an earlier value.
    void write(const std::string& section, const std::string& key, const std::string& value);

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace brevant::host::local
