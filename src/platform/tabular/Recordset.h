#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/Variant.h"
#include "platform/tabular/QueryResult.h"
#include "platform/tabular/TableInfo.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform::tabular {

class Connection;
class TabularDriver;

/// A static recordset: every record of a query or table, read when it is opened, so the
/// record count is known and the records stay usable after the connection has gone. It
/// travels in a Variant as "Recordset".
///
/// Editable recordsets read one table and write back by the table's primary key (or by its
/// row identifier when the recordset was opened by the table's name). With LockType::
/// Optimistic, update() writes the current record at once; with BatchOptimistic, update()
/// keeps the change in the recordset and updateBatch() writes every added or modified record
/// later, through the recordset's connection or any other, also after it was detached.
/// Moving, adding a record or writing the batch first completes a pending edit, as update()
/// would.
///
/// Every failure throws automation::PlatformError: TabularError::NoCurrentRecord,
/// FieldNotFound, NotUpdatable, ObjectClosed and RowNotFound, or the database's error naming
/// the statement.
class Recordset : public automation::AutomationObject {
    struct Key {
        explicit Key() = default;
    };
    friend class Connection;

public:
    enum class LockType { ReadOnly, Optimistic, BatchOptimistic };
    enum class RecordStatus { Unmodified, Modified, New };
    /// What marshal() carries: every record, or the added and modified ones only.
    enum class MarshalOptions { All, ModifiedOnly };
    using Field = ResultColumn;

    /// Where an editable recordset writes: the table, the column each field writes to, and
    /// the key. With no key fields the records' keys are row identifiers, read from the
    /// query's first column (which is then not a field).
    struct WriteTarget {
        TableInfo table;
        std::vector<std::string> columns;
        std::vector<std::string> keyColumns;
        std::vector<int> keyFields;
    };

    Recordset(Key, std::string source, LockType lock, QueryResult result,
              std::optional<WriteTarget> target, std::shared_ptr<Connection> connection);

    std::string_view className() const override { return "Recordset"; }

    /// The command text or table name it was opened from.
    const std::string& source() const { return m_source; }
    LockType lockType() const { return m_lock; }
    /// The table an editable recordset writes to; empty for read-only ones.
    std::string tableName() const;
    bool isOpen() const { return m_open; }
    /// Releases the records and the connection; a pending edit is dropped. Using the
    /// recordset afterwards throws TabularError::ObjectClosed.
    void close();

    /// Number of records, added ones included.
    int32_t recordCount() const;
    /// True when there is no current record because the position is after the last record
    /// (eof) or before the first (bof); both are true for an empty recordset.
    bool eof() const;
    bool bof() const;
    /// Throw TabularError::NoCurrentRecord when the recordset is empty.
    void moveFirst();
    void moveLast();
    /// Throw TabularError::NoCurrentRecord when already after the last (before the first)
    /// record.
    void moveNext();
    void movePrevious();

    int32_t fieldCount() const;
    /// Throws TabularError::FieldNotFound for a position out of range.
    const Field& field(int32_t index) const;
    /// The position of the field of that name, compared without regard to case (the first of
    /// equal names); nothing when there is none.
    std::optional<int32_t> fieldIndex(std::string_view name) const;
    std::vector<std::string> fieldNames() const;

    /// A value of the current record: Null, a 32-bit integer (a double beyond that range),
    /// a double, a string or a date. Throws NoCurrentRecord and FieldNotFound.
    automation::Variant value(int32_t index) const;
    automation::Variant value(std::string_view name) const;
    /// Sets a value of the current record, converted to the field's type (Empty becomes
    /// Null), and starts an edit when none is pending. Throws NotUpdatable for a read-only
    /// recordset, and the conversion's error (13 type mismatch, 6 overflow) naming the field.
    void setValue(int32_t index, const automation::Variant& value);
    void setValue(std::string_view name, const automation::Variant& value);

    /// Appends a record of Nulls and makes it current; the fields it is given are written on
    /// insert, the others take the table's defaults.
    void addNew();
    /// Completes the pending edit (see the class comment). An Optimistic recordset without a
    /// connection throws ObjectClosed and keeps the edit.
    void update();
    /// Drops the pending edit; an added record is removed and the earlier position restored.
    void cancelUpdate();
    /// Status of the current record.
    RecordStatus status() const;

    /// Writes every added and modified record through the recordset's connection, or through
    /// the given one, in one group. When a record fails, the records written before it stay
    /// written and unmodified, the failing one and those after it stay pending, and the error
    /// names the record, the table and the statement.
    void updateBatch();
    void updateBatch(Connection& connection);

    const std::shared_ptr<Connection>& activeConnection() const { return m_connection; }
    /// Attaches the recordset to a connection; null detaches it.
    void setActiveConnection(std::shared_ptr<Connection> connection);

    MarshalOptions marshalOptions() const { return m_marshalOptions; }
    void setMarshalOptions(MarshalOptions options) { m_marshalOptions = options; }
    /// A detached copy to hand over, carrying the records that marshalOptions() selects with
    /// their status and keys; its updateBatch writes them as this recordset's would.
    std::shared_ptr<Recordset> marshal();

private:
    struct Record {
        std::vector<automation::Variant> values;
        /// Key values as last read or written; empty for a record not yet inserted.
        std::vector<automation::Variant> key;
        std::vector<bool> changed;
        RecordStatus status = RecordStatus::Unmodified;
    };
    struct Edit {
        Record before;
        bool adding = false;
        int32_t returnPosition = 0;
    };

    void requireOpen() const;
    void requireEditable() const;
    const Record& currentRecord() const;
    Record& currentRecord();
    int32_t checkedIndex(int32_t index) const;
    int32_t indexOf(std::string_view name) const;
    [[noreturn]] void fail(int32_t number, const std::string& message) const;
    /// Writes one record and marks it unmodified.
    void write(TabularDriver& driver, Record& record);
    std::vector<automation::Variant> keyOf(const Record& record) const;

    std::string m_source;
    LockType m_lock;
    std::vector<Field> m_fields;
    std::vector<Record> m_records;
    std::optional<WriteTarget> m_target;
    std::shared_ptr<Connection> m_connection;
    int32_t m_position = 0;
    std::optional<Edit> m_edit;
    MarshalOptions m_marshalOptions = MarshalOptions::All;
    bool m_open = true;
};

} // namespace brevant::platform::tabular
