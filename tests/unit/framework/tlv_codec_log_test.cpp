#include "tests/support/codec_test.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdlib>
#include <functional>

namespace talvik::test {

/// One way to make the codec log, and how many lines come of it.
struct LoggedRefusal {
    const char* name;
    std::size_t lines;
    std::function<void(Package&)> provoke;

    friend std::ostream& operator<<(std::ostream& os, const LoggedRefusal& row)
    {
        return os << row.name;
    }
};

/// What the codec records with ACE before each line that it logs.
class TlvLogPlace : public CodecTest, public testing::WithParamInterface<LoggedRefusal> {
protected:
    static constexpr int kError = ENOTUNIQ;  // nothing on the way sets this one

    void provoke()
    {
        host.memcpyResult = 22;
        errno = kError;
        GetParam().provoke(package);
    }

    /// The number behind "Line=" in a line's text; 0 when it has none.
    static int printedLine(const std::string& text)
    {
        const std::string mark = "Line=";
        const auto found = text.find(mark);
        return found == std::string::npos ? 0 : std::atoi(text.c_str() + found + mark.size());
    }
};

TEST_P(TlvLogPlace, IsRecordedWithEachLine)
{
    provoke();

    ASSERT_EQ(aceLog.facts.size(), GetParam().lines);
    for (std::size_t i = 0; i < aceLog.facts.size(); ++i) {
        const AceLogFacts& facts = aceLog.facts[i];
        EXPECT_STREQ(facts.file, kSource) << aceLog.lines[i];
        EXPECT_GT(facts.line, 0) << aceLog.lines[i];
        EXPECT_EQ(facts.error, kError) << aceLog.lines[i];
        EXPECT_EQ(facts.priority, LM_ERROR) << aceLog.lines[i];
    }
}

TEST_P(TlvLogPlace, IsTheOneThatTheTextNames)
{
    provoke();

    for (std::size_t i = 0; i < aceLog.facts.size(); ++i) {
        const std::string& text = aceLog.lines[i];
        const bool namesOne = text.find("Line=") != std::string::npos;
        EXPECT_EQ(printedLine(text), namesOne ? aceLog.facts[i].line : 0) << text;
    }
}

TEST_P(TlvLogPlace, IsThatOfTheLastLineAfterwards)
{
    provoke();

    ACE_Log_Msg* log = ACE_Log_Msg::instance();
    EXPECT_STREQ(log->file(), kSource);
    EXPECT_EQ(log->linenum(), aceLog.facts.back().line);
    EXPECT_EQ(log->errnum(), kError);
}

namespace {

std::function<void(Package&)> decodeOf(const WireBytes& wire)
{
    return [bytes = wire.bytes()](Package& package) mutable {
        package.decode(bytes.data(), static_cast<unsigned>(bytes.size()));
    };
}

std::function<void(Package&)> decodeOfRecord(const WireBytes& record)
{
    return decodeOf(WireBytes::package(record));
}

/// Its last cell starts at 65532 and leads back to the first.
WireBytes endlessRecord()
{
    return WireBytes()
        .u64(0)
        .u16(65523)
        .cellHead(1, 1, 65518)
        .overwrite(65534, WireBytes().u16(10))
        .overwrite(65539, WireBytes().u8(0));
}

const LoggedRefusal kLoggedRefusals[] = {
    {"NoBuffer", 2, [](Package& package) { package.decode(nullptr, 100); }},
    {"HeaderOfAnotherVersion", 1, decodeOf(WireBytes::header(0x55555555, 2, 0))},
    {"BytesBelowARecordHeader", 1, decodeOf(WireBytes::header(9).fill(9))},
    {"RecordLongerThanTheRest", 2, decodeOfRecord(WireBytes().u64(1).u16(1))},
    {"BytesBelowACellHeader", 2, decodeOfRecord(WireBytes::record(1, WireBytes().fill(3)))},
    {"UnknownType", 2, decodeOfRecord(WireBytes::record(1, WireBytes().cell(10, 1, "")))},
    {"ValueTooLong", 2,
     decodeOfRecord(WireBytes::record(1, WireBytes().cellHead(2, 1, 9).fill(1)))},
    {"EndlessCells", 2, decodeOfRecord(endlessRecord())},
    {"NoBufferForTheBytes", 1, [](Package& package) { package.encode(nullptr, 100); }},
    {"SmallBufferForTheBytes", 1,
     [](Package& package) {
         unsigned char byte = 0;
         package.encode(&byte, 1);
     }},
    {"HostsCopyThatFails", 1,
     [](Package& package) {
         unsigned char bytes[28];
         package.encode(bytes, sizeof bytes);
     }},
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Refusals, TlvLogPlace, testing::ValuesIn(kLoggedRefusals),
                         [](const auto& row) { return row.param.name; });

}  // namespace talvik::test
