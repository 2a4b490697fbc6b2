#include "fuzz/properties/alarm_catalogue_property.h"

#include "alarmconfig/alarm_config_parser.h"
#include "framework/kel_exception.h"
#include "fuzz/properties/alarm_host.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>
#include <vector>

namespace talvik::fuzz {

namespace {

constexpr std::size_t kMaxIds = 8;
constexpr const char* kUntouched = "untouched";
constexpr int kNoPosition = 0x100400F;

void require(bool holds, const char* rule)
{
    if (!holds) {
        std::fprintf(stderr, "alarm catalogue property broken: %s\n", rule);
        std::abort();
    }
}

/// What the two look-ups of one id gave.
struct Answer {
    int oidResult = 0;
    int infoResult = 0;
    unsigned id32 = 77;
    std::string oid = kUntouched;
    std::string location = kUntouched;
    std::string detail = kUntouched;
    std::string suggestion = kUntouched;
    std::string name = kUntouched;

    bool operator==(const Answer& other) const
    {
        return oidResult == other.oidResult && infoResult == other.infoResult &&
               id32 == other.id32 && oid == other.oid && location == other.location &&
               detail == other.detail && suggestion == other.suggestion && name == other.name;
    }
};

/// What came of loading both files and asking for some ids.
struct Outcome {
    std::string thrown;
    std::vector<Answer> answers;
    test::plain::Lines lines;

    bool operator==(const Outcome& other) const
    {
        return thrown == other.thrown && answers == other.answers && lines == other.lines;
    }
};

std::vector<unsigned long long> idsIn(const std::string& text)
{
    static constexpr const char* kDigits = "0123456789";
    std::vector<unsigned long long> ids{0, 1};
    std::size_t begin = text.find_first_of(kDigits);
    while (begin != std::string::npos && ids.size() < kMaxIds) {
        ids.push_back(
            static_cast<unsigned long long>(std::strtoll(text.c_str() + begin, nullptr, 10)));
        begin = text.find_first_of(kDigits, text.find_first_not_of(kDigits, begin));
    }
    return ids;
}

Answer lookUp(CAlarmConfigParser& parser, unsigned long long id)
{
    Answer answer;
    answer.oidResult = parser.getAlarmOidInfo(id, answer.oid);
    answer.infoResult = parser.getAlarmInfo(id, "0,1,,a&#44;b", answer.location, answer.detail,
                                            answer.id32, answer.name, answer.suggestion);
    return answer;
}

void checkAnswer(const Answer& answer, unsigned long long id)
{
    Answer nothing;
    nothing.oidResult = nothing.infoResult = -1;
    require(answer.oidResult == 0 || answer == nothing, "a refusal touches no output");
    require(id != 0 || answer == nothing, "there is no alarm 0");
    if (answer.oidResult == 0) {
        require(answer.infoResult == 0 || answer.infoResult == kNoPosition,
                "an alarm with an OID has texts");
        require(answer.id32 == (id & 0xFFFFFFFFU), "an alarm has the lower half of its id");
    }
}

Outcome load(const std::vector<unsigned long long>& ids)
{
    Outcome outcome;
    try {
        CAlarmConfigParser& parser = *CAlarmConfigParser::instance();
        for (const auto id : ids) {
            outcome.answers.push_back(lookUp(parser, id));
        }
        require(&parser == CAlarmConfigParser::instance(), "a loaded catalogue stays");
    } catch (const CKEL_Exception& error) {
        require(outcome.answers.empty(), "a look-up throws nothing");
        outcome.thrown = error.what();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "thrown: %s\n", error.what());
        require(false, "only a CKEL_Exception leaves the catalogue");
    }
    CAlarmConfigParser::destroy();
    outcome.lines = std::exchange(alarmHost().lines, {});
    require(alarmHost().guards == 0, "every log guard is closed");
    return outcome;
}

}  // namespace

void checkAlarmCatalogue(const std::uint8_t* data, std::size_t size)
{
    const std::string input(data, data + size);
    const std::string definitions = input.substr(0, input.find('\0'));
    alarmHost().definitions.write(definitions);
    alarmHost().literals.write(definitions.size() < size ? input.substr(definitions.size() + 1)
                                                         : R"({"alarm":{"param_enum":[]}})");
    const auto ids = idsIn(definitions);

    const Outcome first = load(ids);
    require(first == load(ids), "a second loading gives the same");
    for (std::size_t i = 0; i < first.answers.size(); ++i) {
        checkAnswer(first.answers[i], ids[i]);
    }
}

}  // namespace talvik::fuzz
