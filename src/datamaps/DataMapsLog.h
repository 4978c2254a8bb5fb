#pragma once

#include <fstream>
#include <string>

namespace brevant::platform::automation {
class AutomationError;
}

namespace brevant::datamaps {

/// The progress log of the data-map batches: a text file in the region folder, one line per
/// step. Lines are flushed as they are written so that a failure part way leaves every step
/// before it on disk.
class DataMapsLog {
public:
    /// Starts the file at `path`, replacing any earlier one. Throws AutomationError 76 when it
    /// cannot be created.
    void create(const std::string& path);
    /// Opens the file at `path` for appending, creating it when missing.
    void append(const std::string& path);
    /// Writes one line; nothing when no file is open.
    void write(const std::string& line);
    /// Writes `text` followed by the current time of day in the long time format.
    void stamped(const std::string& text);
    /// Writes an empty line.
    void blank() { write(""); }
    void close();

    /// `text`, the error number, " error source : ", the source, " error description : " and
    /// the description: the form of every failure line.
    static std::string failureLine(const std::string& text,
                                   const platform::automation::AutomationError& error);

private:
    void open(const std::string& path, std::ios::openmode mode);

    std::ofstream m_stream;
};

} // namespace brevant::datamaps
