#include "platform/tabular/Recordset.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/tabular/Connection.h"
#include "platform/tabular/TabularDriver.h"
#include "platform/tabular/TabularErrors.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace brevant::platform::tabular {

using automation::PlatformError;
using automation::Variant;
using automation::VariantType;

namespace {

constexpr const char* kSource = "Recordset";

Variant integerValue(double value)
{
    if (value >= std::numeric_limits<int32_t>::min() &&
        value <= std::numeric_limits<int32_t>::max()) {
        return Variant(static_cast<int32_t>(value));
    }
    return Variant(value);
}

/// A value as the field's column would hold it, so that what is read back before and after
/// the write is the same.
Variant convertForField(const Recordset::Field& field, const Variant& value)
{
    if (value.isEmpty() || value.isNull()) {
        return Variant::null();
    }
    switch (field.type) {
    case FieldType::Integer:
        // Half to even, as the automation conversions round.
        return integerValue(std::nearbyint(value.toDouble()));
    case FieldType::Double:
        return Variant(value.toDouble());
    case FieldType::Text:
        return Variant(value.toString());
    case FieldType::Date:
        return Variant(value.toDate());
    case FieldType::Binary:
    case FieldType::Variant:
        break;
    }
    switch (value.type()) {
    case VariantType::Array:
    case VariantType::Collection:
    case VariantType::Object:
        throw automation::AutomationError(automation::ErrorNumber::TypeMismatch, kSource,
                                          "Type mismatch: a field cannot hold " + value.typeName());
    default:
        return value;
    }
}

std::string describeKey(const std::vector<std::string>& columns, const std::vector<Variant>& key)
{
    std::string text;
    for (std::size_t i = 0; i < columns.size() && i < key.size(); ++i) {
        text += (i ? ", " : "") + columns[i] + " = " +
                (key[i].isNull() ? std::string("Null") : key[i].toString());
    }
    return text;
}

} // namespace

Recordset::Recordset(Key, std::string source, LockType lock, QueryResult result,
                     std::optional<WriteTarget> target, std::shared_ptr<Connection> connection)
    : m_source(std::move(source)), m_lock(lock), m_target(std::move(target)),
      m_connection(std::move(connection))
{
    const bool rowIdFirst = m_target && m_target->keyFields.empty();
    m_fields.assign(result.columns.begin() + (rowIdFirst ? 1 : 0), result.columns.end());
    m_records.reserve(result.rows.size());
    for (auto& row : result.rows) {
        Record record;
        if (rowIdFirst) {
            record.key.push_back(std::move(row.front()));
            row.erase(row.begin());
        }
        record.values = std::move(row);
        record.changed.assign(m_fields.size(), false);
        if (m_target && !rowIdFirst) {
            record.key = keyOf(record);
        }
        m_records.push_back(std::move(record));
    }
}

void Recordset::fail(int32_t number, const std::string& message) const
{
    throw PlatformError(number, kSource, message + " (recordset of \"" + m_source + "\")");
}

void Recordset::requireOpen() const
{
    if (!m_open) {
        fail(TabularError::ObjectClosed, "the recordset is closed");
    }
}

void Recordset::requireEditable() const
{
    requireOpen();
    if (m_lock == LockType::ReadOnly) {
        fail(TabularError::NotUpdatable, "the recordset is read-only");
    }
}

std::string Recordset::tableName() const
{
    return m_target ? m_target->table.name : std::string();
}

void Recordset::close()
{
    m_records.clear();
    m_edit.reset();
    m_connection.reset();
    m_open = false;
}

int32_t Recordset::recordCount() const
{
    requireOpen();
    return static_cast<int32_t>(m_records.size());
}

bool Recordset::eof() const
{
    requireOpen();
    return m_records.empty() || m_position >= recordCount();
}

bool Recordset::bof() const
{
    requireOpen();
    return m_records.empty() || m_position < 0;
}

void Recordset::moveFirst()
{
    update();
    if (m_records.empty()) {
        fail(TabularError::NoCurrentRecord, "cannot move to the first record: there is none");
    }
    m_position = 0;
}

void Recordset::moveLast()
{
    update();
    if (m_records.empty()) {
        fail(TabularError::NoCurrentRecord, "cannot move to the last record: there is none");
    }
    m_position = recordCount() - 1;
}

void Recordset::moveNext()
{
    update();
    if (eof()) {
        fail(TabularError::NoCurrentRecord, "cannot move past the end of the records");
    }
    ++m_position;
}

void Recordset::movePrevious()
{
    update();
    if (bof()) {
        fail(TabularError::NoCurrentRecord, "cannot move before the first record");
    }
    --m_position;
}

const Recordset::Record& Recordset::currentRecord() const
{
    if (eof() || bof()) {
        fail(TabularError::NoCurrentRecord,
             "there is no current record: the recordset is empty or past its first or last "
             "record");
    }
    return m_records[static_cast<std::size_t>(m_position)];
}

Recordset::Record& Recordset::currentRecord()
{
    return const_cast<Record&>(std::as_const(*this).currentRecord());
}

int32_t Recordset::fieldCount() const
{
    requireOpen();
    return static_cast<int32_t>(m_fields.size());
}

int32_t Recordset::checkedIndex(int32_t index) const
{
    if (index < 0 || index >= fieldCount()) {
        fail(TabularError::FieldNotFound, "no field at position " + std::to_string(index) +
                                              ": there are " + std::to_string(fieldCount()));
    }
    return index;
}

const Recordset::Field& Recordset::field(int32_t index) const
{
    return m_fields[static_cast<std::size_t>(checkedIndex(index))];
}

std::optional<int32_t> Recordset::fieldIndex(std::string_view name) const
{
    requireOpen();
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        if (automation::equalsIgnoreCase(m_fields[i].name, name)) {
            return static_cast<int32_t>(i);
        }
    }
    return std::nullopt;
}

int32_t Recordset::indexOf(std::string_view name) const
{
    const auto index = fieldIndex(name);
    if (!index) {
        fail(TabularError::FieldNotFound, "no field named " + std::string(name));
    }
    return *index;
}

std::vector<std::string> Recordset::fieldNames() const
{
    requireOpen();
    std::vector<std::string> names;
    for (const auto& f : m_fields) {
        names.push_back(f.name);
    }
    return names;
}

Variant Recordset::value(int32_t index) const
{
    const Record& record = currentRecord();
    return record.values[static_cast<std::size_t>(checkedIndex(index))];
}

Variant Recordset::value(std::string_view name) const
{
    return value(indexOf(name));
}

void Recordset::setValue(int32_t index, const Variant& value)
{
    requireEditable();
    Record& record = currentRecord();
    const auto i = static_cast<std::size_t>(checkedIndex(index));
    Variant converted;
    try {
        converted = convertForField(m_fields[i], value);
    } catch (const automation::AutomationError& e) {
        fail(e.number(), "cannot set field " + m_fields[i].name + ": " + e.description());
    }
    if (!m_edit) {
        m_edit = Edit{.before = record, .adding = false, .returnPosition = m_position};
    }
    record.values[i] = std::move(converted);
    record.changed[i] = true;
}

void Recordset::setValue(std::string_view name, const Variant& value)
{
    setValue(indexOf(name), value);
}

void Recordset::addNew()
{
    requireEditable();
    update();
    Record record;
    record.values.assign(m_fields.size(), Variant::null());
    record.changed.assign(m_fields.size(), false);
    record.status = RecordStatus::New;
    m_records.push_back(std::move(record));
    m_edit = Edit{.before = {}, .adding = true, .returnPosition = m_position};
    m_position = recordCount() - 1;
}

void Recordset::update()
{
    requireOpen();
    if (!m_edit) {
        return;
    }
    Record& record = currentRecord();
    if (m_lock == LockType::Optimistic) {
        if (!m_connection) {
            fail(TabularError::ObjectClosed, "cannot write the record: there is no connection");
        }
        write(m_connection->driver(), record);
    } else if (record.status == RecordStatus::Unmodified &&
               std::find(record.changed.begin(), record.changed.end(), true) !=
                   record.changed.end()) {
        record.status = RecordStatus::Modified;
    }
    m_edit.reset();
}

void Recordset::cancelUpdate()
{
    requireOpen();
    if (!m_edit) {
        return;
    }
    if (m_edit->adding) {
        m_records.erase(m_records.begin() + m_position);
    } else {
        m_records[static_cast<std::size_t>(m_position)] = std::move(m_edit->before);
    }
    m_position = m_edit->returnPosition;
    m_edit.reset();
}

Recordset::RecordStatus Recordset::status() const
{
    return currentRecord().status;
}

std::vector<Variant> Recordset::keyOf(const Record& record) const
{
    std::vector<Variant> key;
    for (const int field : m_target->keyFields) {
        key.push_back(record.values[static_cast<std::size_t>(field)]);
    }
    return key;
}

void Recordset::write(TabularDriver& driver, Record& record)
{
    const WriteTarget& target = *m_target;
    std::vector<std::string> columns;
    std::vector<Variant> values;
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        if (record.changed[i]) {
            columns.push_back(target.columns[i]);
            values.push_back(record.values[i]);
        }
    }
    if (record.status == RecordStatus::New) {
        const auto rowId = driver.insertRow(target.table, columns, values);
        if (target.keyFields.empty()) {
            record.key = {integerValue(static_cast<double>(rowId.value_or(0)))};
        } else {
            // A key that is the row identifier is generated when it was left Null.
            for (const int field : target.keyFields) {
                const auto i = static_cast<std::size_t>(field);
                const ColumnInfo* column = target.table.column(target.columns[i]);
                if (rowId && column && column->rowIdAlias && record.values[i].isNull()) {
                    record.values[i] = integerValue(static_cast<double>(*rowId));
                }
            }
            record.key = keyOf(record);
        }
    } else if (!columns.empty()) {
        if (driver.updateRow(target.table, target.keyColumns, record.key, columns, values) == 0) {
            fail(TabularError::RowNotFound,
                 "no row of " + target.table.name + " has the key " +
                     describeKey(target.keyColumns, record.key) +
                     " any more: it was changed or deleted since it was read");
        }
        if (!target.keyFields.empty()) {
            record.key = keyOf(record);
        }
    }
    record.status = RecordStatus::Unmodified;
    record.changed.assign(m_fields.size(), false);
}

void Recordset::updateBatch()
{
    requireOpen();
    if (!m_connection) {
        fail(TabularError::ObjectClosed, "cannot write the records: there is no connection");
    }
    updateBatch(*m_connection);
}

void Recordset::updateBatch(Connection& connection)
{
    requireEditable();
    update();
    TabularDriver& driver = connection.driver();
    driver.beginWrites();
    try {
        for (std::size_t r = 0; r < m_records.size(); ++r) {
            Record& record = m_records[r];
            if (record.status == RecordStatus::Unmodified) {
                continue;
            }
            try {
                write(driver, record);
            } catch (const PlatformError& e) {
                throw PlatformError(e.number(), e.source(),
                                    "cannot write record " + std::to_string(r + 1) + " of \"" +
                                        m_source + "\" to " + m_target->table.name + " in " +
                                        connection.databaseName() + ": " + e.what());
            }
        }
    } catch (...) {
        // Records written before the failure are kept, as cursors keep theirs.
        try {
            driver.commitWrites();
        } catch (const PlatformError&) {
            // The failure of the write is the one to report.
        }
        throw;
    }
    driver.commitWrites();
}

void Recordset::setActiveConnection(std::shared_ptr<Connection> connection)
{
    requireOpen();
    m_connection = std::move(connection);
}

std::shared_ptr<Recordset> Recordset::marshal()
{
    requireOpen();
    update();
    auto copy = std::make_shared<Recordset>(*this);
    copy->m_connection.reset();
    if (m_marshalOptions == MarshalOptions::ModifiedOnly) {
        std::erase_if(copy->m_records,
                      [](const Record& r) { return r.status == RecordStatus::Unmodified; });
    }
    copy->m_position = 0;
    return copy;
}

} // namespace brevant::platform::tabular
