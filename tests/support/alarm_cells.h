#pragma once

#include "framework/tlv_record.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace talvik::test {

constexpr unsigned long long kKnownAlarm = 0xF00C90001;

/// An alarm record by its cells, for tests to change one of them. A cell is type code and bytes.
class AlarmCells {
public:
    /// A fault of the known alarm.
    AlarmCells()
    {
        wide(1, kKnownAlarm);
        text(8, "D3,E1");
        number(2, 3);
        number(3, 42);
        wide(4, 1000);
        wide(5, 0);
        wide(6, 0);
    }

    AlarmCells& number(unsigned short tag, std::uint32_t value)
    {
        return cell(tag, CTLVCell::TLV_UINT, bytesOf(value));
    }

    AlarmCells& wide(unsigned short tag, std::uint64_t value)
    {
        return cell(tag, CTLVCell::TLV_UINT, bytesOf(value));
    }

    AlarmCells& text(unsigned short tag, const std::string& value)
    {
        return cell(tag, CTLVCell::TLV_STRING, value + '\0');
    }

    AlarmCells& cell(unsigned short tag, CTLVCell::ETLVType type, std::string bytes)
    {
        cells_[tag] = {type, std::move(bytes)};
        return *this;
    }

    AlarmCells& without(unsigned short tag)
    {
        cells_.erase(tag);
        return *this;
    }

    /// The record's own identifier.
    AlarmCells& identifiedBy(std::uint64_t id)
    {
        id_ = id;
        return *this;
    }

    std::unique_ptr<CTLVRecordV3> record() const
    {
        auto made = std::make_unique<CTLVRecordV3>(id_);
        for (const auto& [tag, content] : cells_) {
            auto cell = std::make_unique<CTLVCell>();
            cell->set_i(content.first, tag, content.second.data(), content.second.size());
            made->append(cell.get());
            cell.release();
        }
        return made;
    }

private:
    template <typename Number>
    static std::string bytesOf(Number value)
    {
        return {reinterpret_cast<const char*>(&value), sizeof value};
    }

    std::uint64_t id_ = 7;
    std::map<unsigned short, std::pair<CTLVCell::ETLVType, std::string>> cells_;
};

}  // namespace talvik::test
