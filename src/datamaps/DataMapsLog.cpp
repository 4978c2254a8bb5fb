#include "datamaps/DataMapsLog.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/ui/TimeFormat.h"

namespace brevant::datamaps {

void DataMapsLog::open(const std::string& path, std::ios::openmode mode)
{
    m_stream.close();
    m_stream.clear();
    m_stream.open(path, mode);
    if (!m_stream) {
        throw platform::automation::AutomationError(platform::automation::ErrorNumber::PathNotFound,
                                                    "Brevant", "Path not found: " + path);
    }
}

void DataMapsLog::create(const std::string& path)
{
    open(path, std::ios::out | std::ios::trunc);
}

void DataMapsLog::append(const std::string& path)
{
    open(path, std::ios::out | std::ios::app);
}

void DataMapsLog::write(const std::string& line)
{
    if (m_stream.is_open()) {
        m_stream << line << '\n';
        m_stream.flush();
    }
}

void DataMapsLog::stamped(const std::string& text)
{
    write(text + platform::ui::longTimeOfDayNow());
}

void DataMapsLog::close()
{
    m_stream.close();
}

std::string DataMapsLog::failureLine(const std::string& text,
                                     const platform::automation::AutomationError& error)
{
    return text + std::to_string(error.number()) + " error source : " + error.source() +
           " error description : " + error.description();
}

} // namespace brevant::datamaps
