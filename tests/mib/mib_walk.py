"""A walk over a running agent held against a MIB's text, as libsmi reads it: what is wrong, a line each.

Cells are type and value by name, as `cells_of` makes them.
"""

import dataclasses

from mib_facts import DATE_AND_TIME

from alarm_table import number_in
from snmp_wire import COUNTER64, GAUGE, INTEGER, OCTETS

WIRE = {"INTEGER": INTEGER, "OCTET STRING": OCTETS, "Unsigned32": GAUGE, "Gauge32": GAUGE, "Counter64": COUNTER64}
LETTERS = {INTEGER: "i", OCTETS: "s", GAUGE: "u"}
READABLE = ("read-only", "read-write", "read-create")
WRITABLE = ("read-write", "read-create")


def cells_of(manager, root):
    return {one.name: (one.tag, number_in(one)) for one in manager.walk(root)}


def name_of(one):
    return f".{one.oid}"


def value_faults(one, tag, value):
    """What is wrong with a value of that object."""
    if tag != WIRE[one.syntax.base]:
        return [f"{one.name}: type {tag:#x} where the text has {one.syntax.base}"]
    if one.syntax.labels:
        known = value in one.syntax.labels.values()
        return [] if known else [f"{one.name}: {value} is no number of its enumeration"]
    bounds, measure = one.syntax.bounds, len(value) if tag == OCTETS else value
    faults = []
    if bounds and tag != COUNTER64 and not any(low <= measure <= high for low, high in bounds):
        faults.append(f"{one.name}: {measure} is not within {bounds}")
    if tag == OCTETS and one.syntax.written != DATE_AND_TIME:
        try:
            value.decode()
        except UnicodeDecodeError:
            faults.append(f"{one.name}: no UTF-8")
    return faults


def index_faults(table, numbers, row):
    """What is wrong with the numbers behind a row's cells: those that are columns are in the row, all are within bounds."""
    columns = {column.name: column for column in table.columns}
    if len(numbers) != len(table.index):
        return [f"{table.name}: row {'.'.join(numbers)} has not the index {table.index}"]
    faults = []
    for name, number in zip(table.index, numbers):
        if columns[name].access in READABLE:
            if number != str(row.get(name)):
                faults.append(f"{table.name}: row {number} has {row.get(name)} as {name}")
        elif not any(low <= int(number) <= high for low, high in columns[name].syntax.bounds):
            faults.append(f"{name}: {number} is not within {columns[name].syntax.bounds}")
    return faults


def table_faults(table, cells):
    """What is wrong with a table, given its cells on the wire; takes them away from there."""
    rows, faults = {}, []
    for column in table.columns:
        start = name_of(column) + "."
        mine = {name: cells.pop(name) for name in list(cells) if name.startswith(start)}
        if mine and column.access not in READABLE:
            faults.append(f"{column.name}: is served although it is {column.access}")
        for name, (tag, value) in mine.items():
            rows.setdefault(name[len(start):], {})[column.name] = value
            faults += value_faults(column, tag, value)
    if not rows:
        faults.append(f"{table.name}: has no rows")
    for suffix, row in rows.items():
        missing = {column.name for column in table.columns if column.access in READABLE} - set(row)
        faults += [f"{name}: is not served" for name in sorted(missing)]
        faults += index_faults(table, suffix.split("."), row)
    return faults


def walk_faults(module, cells):
    """What is wrong with a walk over the whole module; `cells` are type and value by name."""
    cells = dict(cells)
    faults = [fault for table in module.tables for fault in table_faults(table, cells)]
    for scalar in module.scalars:
        found = cells.pop(name_of(scalar) + ".0", None)
        faults += value_faults(scalar, *found) if found else [f"{scalar.name}: is not served"]
    return faults + [f"{name}: is served, but the text has no object there" for name in cells]


def write_faults(module, manager, cells, others=()):
    """What of a walk's cells can be written and should not, or cannot and should.

    Each is set to what it has, or to its value among `others`, pairs of a name and a value.
    """
    others = dict(others)
    faults = []
    for name, (tag, value) in cells.items():
        one = next(one for one in module.objects() if name.startswith(name_of(one) + "."))
        if tag == COUNTER64:
            faults += [f"{one.name}: no SET can carry a Counter64"] if one.access in WRITABLE else []
            continue
        error = manager.set((name, LETTERS[tag], others.get(one.name, value))).error
        if error != ("noError" if one.access in WRITABLE else "notWritable"):
            faults.append(f"{one.name}: a SET of row {name[len(name_of(one)) + 1:]} is answered {error}")
    return faults


def altered(module, name, **changes):
    """The module with an object that is otherwise; among the changes those of its syntax."""
    def change(one):
        if one.name != name:
            return one
        of_syntax = {key: value for key, value in changes.items() if hasattr(one.syntax, key)}
        others = {key: value for key, value in changes.items() if key not in of_syntax}
        return dataclasses.replace(one, syntax=dataclasses.replace(one.syntax, **of_syntax), **others)

    tables = [dataclasses.replace(table, columns=[change(column) for column in table.columns]) for table in module.tables]
    return dataclasses.replace(module, tables=tables, scalars=[change(one) for one in module.scalars],
                               notification_objects=[change(one) for one in module.notification_objects])
