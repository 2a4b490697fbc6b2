#pragma once

#include "framework/tlv_package.h"
#include "host/snmp/mib_description.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

namespace talvik::test {

/// A cell with the bytes given.
inline std::unique_ptr<CTLVCell> cell(CTLVCell::ETLVType type, unsigned short tag,
                                      const std::string& bytes)
{
    auto made = std::make_unique<CTLVCell>();
    made->set_i(type, tag, bytes.data(), bytes.size());
    return made;
}

/// The little-endian bytes of a number.
template <typename Number>
std::string bytesOf(Number number)
{
    std::string bytes(sizeof(number), '\0');
    std::memcpy(bytes.data(), &number, sizeof(number));
    return bytes;
}

/// Fills a record cell by cell.
class RowBuilder {
public:
    RowBuilder& text(unsigned short tag, const std::string& value)
    {
        return add(cell(CTLVCell::TLV_STRING, tag, value + '\0'));
    }

    RowBuilder& number(unsigned short tag, std::int32_t value)
    {
        return add(cell(CTLVCell::TLV_INT, tag, bytesOf(value)));
    }

    RowBuilder& add(std::unique_ptr<CTLVCell> made)
    {
        row_->append(made.get());
        made.release();
        return *this;
    }

    void into(CTLVPackageV3<TLVMsgHeadV3>& rows)
    {
        rows.oRecords.push_back(row_.get());
        row_.release();
    }

private:
    std::unique_ptr<CTLVRecordV3> row_ = std::make_unique<CTLVRecordV3>();
};

/// A table of three columns, 1 text, 2 number and index, 5 number that nobody may read.
inline MibTable smallTable()
{
    MibTable table;
    table.name = "smallTable";
    table.id = {1, 3, 6, 1, 4, 1, 99999, 2, 1};
    table.columns = {{1, "smallText", Syntax::OctetString, Access::ReadOnly, {}},
                     {2, "smallIndex", Syntax::Integer, Access::ReadOnly, {}},
                     {5, "smallSecret", Syntax::Integer, Access::NotAccessible, {}}};
    table.index = {1};
    return table;
}

}  // namespace talvik::test
