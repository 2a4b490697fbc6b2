#include "bench/table_rows.h"

#include "host/snmp/net_snmp.h"

#include <fstream>
#include <stdexcept>

namespace talvik::bench {

namespace {

template <typename Number>
void put(std::ostream& file, Number number)
{
    file.write(reinterpret_cast<const char*>(&number), sizeof number);
}

template <typename Number>
Number take(std::istream& file)
{
    Number number = 0;
    file.read(reinterpret_cast<char*>(&number), sizeof number);
    return number;
}

void putCell(std::ostream& file, const TableCell& cell)
{
    put(file, cell.type);
    put(file, cell.octets.size());
    file.write(cell.octets.data(), static_cast<std::streamsize>(cell.octets.size()));
}

TableCell takeCell(std::istream& file)
{
    TableCell cell{take<unsigned char>(file), std::string(take<std::size_t>(file), '\0')};
    file.read(cell.octets.data(), static_cast<std::streamsize>(cell.octets.size()));
    return cell;
}

}  // namespace

TableCell TableCell::ofNumber(unsigned char type, long number)
{
    return {type, std::string(reinterpret_cast<const char*>(&number), sizeof number)};
}

TableCell TableCell::ofText(const std::string& text)
{
    return {ASN_OCTET_STR, text};
}

void writeRows(const std::string& path, const TableRows& rows)
{
    std::ofstream file(path, std::ios::binary);
    putCell(file, TableCell::ofText(toText(rows.table)));
    put(file, rows.indexType);
    put(file, rows.rows.size());
    for (const auto& row : rows.rows) {
        put(file, row.index);
        put(file, row.cells.size());
        for (const auto& cell : row.cells) {
            putCell(file, cell);
        }
    }
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path + ": is the disk full?");
    }
}

TableRows readRows(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    const auto table = parseObjectId(takeCell(file).octets);
    TableRows rows{table.value(), take<unsigned char>(file), {}};
    rows.rows.resize(take<std::size_t>(file));
    for (auto& row : rows.rows) {
        row.index = take<unsigned long>(file);
        for (auto left = take<std::size_t>(file); left != 0; --left) {
            row.cells.push_back(takeCell(file));
        }
    }
    return rows;
}

}  // namespace talvik::bench
