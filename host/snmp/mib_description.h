#pragma once

#include "host/snmp/object_id.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace talvik {

/// What SNMP shows of a cell.
enum class Syntax { Integer, Unsigned32, Gauge32, Counter32, Counter64, TimeTicks, OctetString };

/// What a manager may do with an object.
enum class Access { NotAccessible, ReadOnly, ReadWrite, ReadCreate };

/// The least and the greatest of something, both included.
struct Bounds {
    long low = 0;
    long high = 0;
};

/// One column of a table: the cells with `tag` of the handler's rows. The tag is the column's
/// sub-identifier too.
struct MibColumn {
    unsigned short tag = 0;
    std::string name;
    Syntax syntax = Syntax::Integer;
    Access access = Access::ReadOnly;
    std::map<long, std::string> enumeration;     ///< labels of an enumerated INTEGER
    std::optional<Bounds> range = std::nullopt;  ///< of a number; its syntax's own when absent
    std::optional<Bounds> size = std::nullopt;   ///< octets of an OCTET STRING
    bool textCell = false;       ///< a number that the handler's cells carry as decimal text
    bool isDestination = false;  ///< an address or a domain name
    bool isDateAndTime = false;  ///< an OCTET STRING that is a DateAndTime; all others are texts
    bool required = false;       ///< a create must name it
    unsigned short aliasOf = 0;  ///< tag of the column that a SET of this one changes; 0: itself
};

/// One table. An instance is `id`.1.column.index, the index made of the columns that `index` names,
/// in order.
struct MibTable {
    std::string name;
    ObjectId id;
    std::vector<MibColumn> columns;  ///< by ascending tag
    std::vector<std::size_t> index;  ///< positions in `columns`
    unsigned short rowStatus = 0;    ///< tag of the RowStatus column; 0: rows cannot be changed
    std::chrono::milliseconds answerLifetime{0};  ///< how long a query's answer may serve again

    /// The column with sub-identifier `tag`, or null.
    const MibColumn* column(unsigned long tag) const;
};

/// One scalar; its instance is `id`.0.
struct MibScalar {
    std::string name;
    ObjectId id;
    /// The cell of the handler's record: its name is the scalar's, its tag may be 0.
    MibColumn cell;
};

/// An object that is seen in notifications only; its instance is `id`.0.
struct MibNotificationObject {
    std::string name;
    ObjectId id;
    Syntax syntax = Syntax::Integer;
    std::map<long, std::string> enumeration;  ///< labels of an enumerated INTEGER
    bool isDateAndTime = false;  ///< an OCTET STRING that is a DateAndTime; all others are texts
};

/// A notification whose OID is known beforehand.
struct MibNotification {
    std::string name;
    ObjectId id;
    std::vector<std::size_t> objects;  ///< positions in `notificationObjects()`, in order
};

/// The MIB description file of a module: how rows and cells map to object identifiers and SNMP
/// types.
///
/// JSON, no comments, no other members than these:
///
///     description ::= {"module": TEXT, "root": OID, "tables": [table...], "scalars": [scalar...],
///                      "notificationObjects"?: [object...], "notifications"?: [notification...],
///                      "description"?: TEXT}
///     table       ::= {"name": TEXT, "oid": OID, "index": [COLUMN NAME...],
///                      "columns": [column...], "rowStatus"?: COLUMN NAME,
///                      "answerLifetimeMs"?: 0..60000, "description"?: TEXT}
///     column      ::= {"tag": 1..4095, "name": TEXT, "syntax": SYNTAX, "access": ACCESS,
///                      "description"?: TEXT, "enumeration"?: {LABEL: NUMBER...},
///                      "range"?: [LOW, HIGH], "size"?: [LOW, HIGH], "cell"?: "text",
///                      "format"?: "destination" | "dateAndTime", "required"?: BOOLEAN,
///                      "aliasOf"?: COLUMN NAME}
///     scalar      ::= {"name": TEXT, "oid": OID, "tag": 0..4095, "syntax": SYNTAX,
///                      "access": ACCESS, "description"?: TEXT,
///                      "enumeration"?: {LABEL: NUMBER...}, "range"?: [LOW, HIGH],
///                      "size"?: [LOW, HIGH]}
///     object      ::= {"name": TEXT, "oid": OID, "syntax": SYNTAX, "description"?: TEXT,
///                      "enumeration"?: {LABEL: NUMBER...}, "format"?: "dateAndTime"}
///     notification ::= {"name": TEXT, "oid": OID, "objects": [OBJECT NAME...],
///                      "description"?: TEXT}
///     SYNTAX      ::= "INTEGER" | "Unsigned32" | "Gauge32" | "Counter32" | "Counter64" |
///                     "TimeTicks" | "OCTET STRING"
///     ACCESS      ::= "not-accessible" | "read-only" | "read-write" | "read-create"
///
/// A scalar's access is "read-only" or "read-write", a column's never "read-write".
/// OIDs are dotted decimal and lie under "root"; no object's OID lies under another's.
class MibDescription {
public:
    /// Reads `path`. Throws `StartupError` that names the file, the place within it and the reason
    /// when the file is missing, is no such JSON or contradicts itself.
    static MibDescription load(const std::string& path);

    /// What is at exactly `id`, or null; an object's instance has another OID. Valid as long as
    /// this object.
    const MibTable* table(const ObjectId& id) const;
    const MibScalar* scalar(const ObjectId& id) const;
    const MibNotificationObject* notificationObject(const ObjectId& id) const;
    const MibNotification* notification(const ObjectId& id) const;

    const std::string& path() const { return path_; }
    const std::string& moduleName() const { return moduleName_; }
    const ObjectId& root() const { return root_; }
    const std::vector<MibTable>& tables() const { return tables_; }
    const std::vector<MibNotificationObject>& notificationObjects() const
    {
        return notificationObjects_;
    }

private:
    friend class MibDescriptionReader;

    std::string path_;
    std::string moduleName_;
    ObjectId root_;
    std::vector<MibTable> tables_;
    std::vector<MibScalar> scalars_;
    std::vector<MibNotificationObject> notificationObjects_;
    std::vector<MibNotification> notifications_;
};

}  // namespace talvik
