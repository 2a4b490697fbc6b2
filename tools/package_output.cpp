#include "tools/package_output.h"

#include "framework/tlv_cell.h"
#include "tools/folded_text.h"
#include "tools/safe_text.h"
#include "tools/trap_output.h"

#include <cstddef>
#include <cstdio>
#include <optional>

namespace talvik::ctl {

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr unsigned kReply = 2;

struct HeaderWord {
    const char* name;
    std::size_t offset;
    std::size_t size;
    std::uint32_t value;
    std::string meaning;
};

std::string hexNumber(std::uint64_t number)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(number));
    return text;
}

std::string hexBytes(const std::vector<unsigned char>& bytes)
{
    std::string text;
    for (const auto byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", unsigned{byte});
        text += digits;
    }
    return text;
}

std::string meaningOfWord3(const TLVMsgHeadV3& head)
{
    if (head.usShort1 == kReply) {
        const auto name = PackageNames::result(head.uiWord3);
        return "result code: " + (name.empty() ? "unknown" : name);
    }
    return head.uiWord3 == kNone ? "attribute: none" : "attribute";
}

std::vector<HeaderWord> wordsOf(const TLVMsgHeadV3& head)
{
    const auto kind = PackageNames::kind(head.usShort1);
    return {
        {"uiMagic", offsetof(TLVMsgHeadV3, uiMagic), 4, head.uiMagic, "magic"},
        {"uiVersion", offsetof(TLVMsgHeadV3, uiVersion), 4, head.uiVersion, "version"},
        {"uiWord2", offsetof(TLVMsgHeadV3, uiWord2), 4, head.uiWord2, "exchange number"},
        {"uiWord3", offsetof(TLVMsgHeadV3, uiWord3), 4, head.uiWord3, meaningOfWord3(head)},
        {"usShort0", offsetof(TLVMsgHeadV3, usShort0), 2, head.usShort0, "reserved"},
        {"usShort1", offsetof(TLVMsgHeadV3, usShort1), 2, head.usShort1,
         "kind: " + (kind.empty() ? "unknown" : kind)},
        {"usShort2", offsetof(TLVMsgHeadV3, usShort2), 2, head.usShort2, "reserved"},
        {"usShort3", offsetof(TLVMsgHeadV3, usShort3), 2, head.usShort3, "reserved"},
        {"uiDataLen", offsetof(TLVMsgHeadV3, uiDataLen), 4, head.uiDataLen, "bytes of records"},
    };
}

/// The value of a numeric cell in decimal.
std::optional<std::string> numberIn(const CapturedCell& cell)
{
    constexpr unsigned kBits = 8;
    if (cell.type < CTLVCell::TLV_UINT || cell.value.empty() ||
        cell.value.size() > sizeof(std::uint64_t)) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    for (std::size_t i = cell.value.size(); i-- > 0;) {
        number = number << kBits | cell.value[i];
    }
    if (cell.type != CTLVCell::TLV_INT) {
        return std::to_string(number);
    }
    const auto unused = kBits * (sizeof number - cell.value.size());
    return std::to_string(static_cast<std::int64_t>(number << unused) >> unused);
}

/// The characters of a text without its NUL.
std::optional<std::string> textIn(const CapturedCell& cell)
{
    if (cell.type != CTLVCell::TLV_STRING) {
        return std::nullopt;
    }
    std::string text(cell.value.begin(), cell.value.end());
    if (!text.empty() && text.back() == '\0') {
        text.pop_back();
    }
    return text;
}

std::string valueOf(const CapturedCell& cell)
{
    if (const auto number = numberIn(cell)) {
        return *number;
    }
    if (const auto text = textIn(cell)) {
        const bool ends = !cell.value.empty() && cell.value.back() == 0;
        return '"' + printable(*text) + (ends ? "\"" : "\" without its NUL");
    }
    return hexBytes(cell.value);
}

Json::Value orNull(const std::string& text)
{
    return text.empty() ? Json::Value() : Json::Value(text);
}

Json::Value jsonOf(const PackageFault& fault)
{
    Json::Value value;
    value["offset"] = static_cast<Json::UInt64>(fault.offset);
    value["reason"] = fault.reason;
    return value;
}

/// `value` in one line without the line feed.
std::string compact(const Json::Value& value)
{
    auto text = jsonLine(value);
    text.pop_back();
    return text;
}

Json::Value headerJson(const CapturedPackage& package)
{
    Json::Value header(Json::objectValue);
    for (const auto& word : wordsOf(package.head)) {
        if (word.offset + word.size <= package.headBytes) {
            header[word.name] = word.value;
        }
    }
    header["kind"] = orNull(PackageNames::kind(package.head.usShort1));
    return header;
}

}  // namespace

void PackageText::begin(const CapturedPackage& package)
{
    print("package " + std::to_string(package.number) + " at offset " +
          std::to_string(package.offset));
    std::vector<TableLine> lines = {{"  FIELD", "VALUE", "MEANING"}};
    for (const auto& word : wordsOf(package.head)) {
        if (word.offset + word.size <= package.headBytes) {
            const auto decimal = std::to_string(word.value);
            lines.push_back({std::string("  ") + word.name,
                             decimal + " (" + hexNumber(word.value) + ")", word.meaning});
        }
    }
    if (lines.size() > 1) {
        constexpr std::size_t kMeaning = 2;
        out_ << alignedTable(lines, style_, Columns{{kMeaning}});
    }
}

void PackageText::record(const CapturedRecord& record)
{
    const auto name = names_.record(record.id);
    print("  record " + std::to_string(record.number) + " at offset " +
          std::to_string(record.offset) + ": identifier " + std::to_string(record.id) + " (" +
          hexNumber(record.id) + (name.empty() ? "" : ", " + name) + "), " +
          std::to_string(record.length) + " bytes of cells" + (record.accepted ? "" : ", refused"));
    if (!record.cells.empty()) {
        constexpr std::size_t kValue = 5;
        std::vector<TableLine> lines = {{"    OFFSET", "TAG", "NAME", "TYPE", "LENGTH", "VALUE"}};
        for (const auto& cell : record.cells) {
            lines.push_back({"    " + std::to_string(cell.offset), std::to_string(cell.tag),
                             names_.cell(record.id, cell.tag),
                             std::to_string(cell.type) + " " + PackageNames::type(cell.type),
                             std::to_string(cell.value.size()), valueOf(cell)});
        }
        out_ << alignedTable(lines, style_, Columns{{kValue}});
    }
    if (record.fault && record.accepted) {
        print("    note: offset " + std::to_string(record.fault->offset) + ": " +
              record.fault->reason + "; accepted all the same, as this is where the record ends");
    } else if (record.fault) {
        printFault(*record.fault);
    }
}

void PackageText::end(const CapturedPackage& /*package*/, const PackageEnd& end)
{
    for (const auto& fault : end.faults) {
        printFault(fault);
    }
    print("  " + std::to_string(end.size) + (end.size == 1 ? " byte, " : " bytes, ") +
          (end.accepted ? "accepted" : "refused as a whole"));
    out_ << '\n';
}

void PackageText::printFault(const PackageFault& fault)
{
    const auto text = "fault: offset " + std::to_string(fault.offset) + ": " + fault.reason;
    print("    " + (style_.colors ? colored(text, Tone::Bad) : text));
}

void PackageText::print(const std::string& text)
{
    constexpr std::size_t kIndent = 6;
    out_ << foldedText(text, style_, kIndent);
}

void PackageJson::begin(const CapturedPackage& package)
{
    out_ << R"({"package":)" << package.number << R"(,"offset":)" << package.offset
         << R"(,"header":)" << compact(headerJson(package)) << R"(,"records":[)";
    first_ = true;
}

void PackageJson::record(const CapturedRecord& record)
{
    Json::Value value;
    value["record"] = static_cast<Json::UInt64>(record.number);
    value["offset"] = static_cast<Json::UInt64>(record.offset);
    value["id"] = std::to_string(record.id);
    value["name"] = orNull(names_.record(record.id));
    value["length"] = record.length;
    value["accepted"] = record.accepted;
    value["fault"] = record.fault ? jsonOf(*record.fault) : Json::Value();
    value["cells"] = Json::Value(Json::arrayValue);
    for (const auto& cell : record.cells) {
        Json::Value shown;
        shown["offset"] = static_cast<Json::UInt64>(cell.offset);
        shown["tag"] = cell.tag;
        shown["name"] = orNull(names_.cell(record.id, cell.tag));
        shown["type"] = cell.type;
        shown["typeName"] = PackageNames::type(cell.type);
        shown["length"] = static_cast<Json::UInt64>(cell.value.size());
        shown["hex"] = hexBytes(cell.value);
        const auto number = numberIn(cell);
        const auto text = textIn(cell);
        shown["number"] = number ? Json::Value(*number) : Json::Value();
        shown["text"] = text ? Json::Value(validUtf8(*text)) : Json::Value();
        value["cells"].append(shown);
    }
    out_ << (first_ ? "" : ",") << compact(value);
    first_ = false;
}

void PackageJson::end(const CapturedPackage& /*package*/, const PackageEnd& end)
{
    Json::Value faults(Json::arrayValue);
    for (const auto& fault : end.faults) {
        faults.append(jsonOf(fault));
    }
    out_ << R"(],"size":)" << end.size << R"(,"accepted":)" << (end.accepted ? "true" : "false")
         << R"(,"faults":)" << compact(faults) << "}\n";
}

}  // namespace talvik::ctl
