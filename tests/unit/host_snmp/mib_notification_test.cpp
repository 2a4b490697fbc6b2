#include "host/snmp/mib_description.h"
#include "host/startup_error.h"
#include "tests/support/built_tree.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using talvik::MibDescription;
using talvik::ObjectId;
using talvik::Syntax;
using talvik::test::sourceFile;
using testing::HasSubstr;

const std::string kSmall = R"({
  "module": "SMALL-MIB", "root": "1.3.6.1.4.1.99999",
  "tables": [{"name": "small", "oid": "1.3.6.1.4.1.99999.1", "index": ["a"], "columns": [
    {"tag": 2, "name": "a", "syntax": "INTEGER", "access": "read-only"}]}],
  "scalars": [{"name": "leaf", "oid": "1.3.6.1.4.1.99999.2", "tag": 0, "syntax": "INTEGER", "access": "read-only"}],
  "notificationObjects": [
    {"name": "when", "oid": "1.3.6.1.4.1.99999.3.1", "syntax": "OCTET STRING", "format": "dateAndTime"},
    {"name": "what", "oid": "1.3.6.1.4.1.99999.3.2", "syntax": "OCTET STRING"},
    {"name": "kind", "oid": "1.3.6.1.4.1.99999.3.3", "syntax": "INTEGER", "enumeration": {"good": 1, "bad": 2}}],
  "notifications": [
    {"name": "hello", "oid": "1.3.6.1.4.1.99999.4.0.1", "objects": ["kind", "when"], "description": "Hello."},
    {"name": "bye", "oid": "1.3.6.1.4.1.99999.4.0.2", "objects": []}]
})";

std::string with(const std::string& part, const std::string& other)
{
    auto text = kSmall;
    return text.replace(text.find(part), part.size(), other);
}

class MibNotifications : public testing::Test {
protected:
    MibDescription load(const std::string& text)
    {
        return MibDescription::load(dir_.write("SMALL.json", text));
    }

    std::string refusal(const std::string& text)
    {
        try {
            load(text);
        } catch (const talvik::StartupError& error) {
            return error.what();
        }
        return "accepted";
    }

    talvik::test::TempDir dir_;
};

TEST_F(MibNotifications, TellTextsFromDatesAndTimes)
{
    const auto mib = load(kSmall);

    const auto* when = mib.notificationObject({1, 3, 6, 1, 4, 1, 99999, 3, 1});
    const auto* what = mib.notificationObject({1, 3, 6, 1, 4, 1, 99999, 3, 2});
    ASSERT_NE(when, nullptr);
    ASSERT_NE(what, nullptr);
    EXPECT_EQ(when->name, "when");
    EXPECT_TRUE(when->isDateAndTime);
    EXPECT_EQ(what->syntax, Syntax::OctetString);
    EXPECT_FALSE(what->isDateAndTime);
}

TEST_F(MibNotifications, KnowObjectsAndNotInstances)
{
    const auto mib = load(kSmall);

    EXPECT_EQ(mib.notificationObject({1, 3, 6, 1, 4, 1, 99999, 3, 1, 0}), nullptr);
    EXPECT_EQ(mib.notificationObject({1, 3, 6, 1, 4, 1, 99999, 2}), nullptr);
    EXPECT_EQ(mib.scalar({1, 3, 6, 1, 4, 1, 99999, 3, 1}), nullptr);
}

TEST_F(MibNotifications, NameTheirObjectsInTheirOwnOrder)
{
    const auto mib = load(kSmall);

    const auto* hello = mib.notification({1, 3, 6, 1, 4, 1, 99999, 4, 0, 1});
    ASSERT_NE(hello, nullptr);
    EXPECT_EQ(hello->name, "hello");
    EXPECT_EQ(hello->objects, (std::vector<std::size_t>{2, 0}));
    EXPECT_EQ(mib.notificationObjects()[2].enumeration.at(2), "bad");
    EXPECT_EQ(mib.notification({1, 3, 6, 1, 4, 1, 99999, 4, 0, 3}), nullptr);
}

TEST_F(MibNotifications, CanBeLeftOut)
{
    const auto text = kSmall.substr(0, kSmall.find(",\n  \"notificationObjects\"")) + "}";

    EXPECT_TRUE(load(text).notificationObjects().empty());
}

struct Refusal {
    const char* name;
    std::string text;
    const char* message;

    friend std::ostream& operator<<(std::ostream& os, const Refusal& row) { return os << row.name; }
};

class MibNotificationRefusal : public MibNotifications,
                               public testing::WithParamInterface<Refusal> {};

TEST_P(MibNotificationRefusal, NamesThePlaceAndTheReason)
{
    EXPECT_THAT(refusal(GetParam().text), HasSubstr(GetParam().message));
}

const Refusal kRefusals[] = {
    {"NotificationsThatAreNoList", with("\"objects\": []}]", "\"objects\": {}}]"),
     "notifications[1].objects: expected an array"},
    {"ObjectWithAccess", with("\"format\"", "\"access\": \"read-only\", \"format\""),
     "notificationObjects[0]: unknown member \"access\""},
    {"ObjectWithoutSyntax", with(R"(, "syntax": "OCTET STRING"},)", "},"),
     "notificationObjects[1]: lacks the member \"syntax\""},
    {"UnknownSyntax", with(R"("OCTET STRING"},)", R"("DateAndTime"},)"),
     "notificationObjects[1].syntax: unknown syntax \"DateAndTime\""},
    {"UnknownFormat", with("\"dateAndTime\"", "\"DateAndTime\""),
     "notificationObjects[0].format: unknown format \"DateAndTime\"; known is dateAndTime"},
    {"NumberWithAFormat", with("\"enumeration\"", "\"format\": \"dateAndTime\", \"enumeration\""),
     "notificationObjects[2].format: only an OCTET STRING can have this"},
    {"TextWithAnEnumeration", with("\"format\": \"dateAndTime\"", "\"enumeration\": {\"a\": 1}"),
     "notificationObjects[0].enumeration: only an INTEGER"},
    {"ObjectNameTwice", with("\"what\"", "\"when\""),
     "notificationObjects[1].name: name \"when\" stands here twice"},
    {"NotificationNameTwice", with("\"bye\"", "\"hello\""),
     "notifications[1].name: name \"hello\" stands here twice"},
    {"NotificationNamedAsAnObject", with("\"bye\"", "\"what\""),
     "notifications[1].name: name \"what\" stands here twice"},
    {"UnknownObject", with("\"kind\", \"when\"]", "\"kind\", \"leaf\"]"),
     "notifications[0].objects[1]: there is no notification object \"leaf\""},
    {"ObjectTwice", with("\"kind\", \"when\"]", "\"when\", \"when\"]"),
     "notifications[0].objects[1]: \"when\" stands here twice"},
    {"ObjectWithinATable", with("99999.3.1\"", "99999.1.1.2\""),
     "\"when\" at 1.3.6.1.4.1.99999.1.1.2 lies within"},
    {"ObjectOutsideTheRoot", with("99999.3.1\"", "99998.3.1\""),
     "\"when\" at 1.3.6.1.4.1.99998.3.1 does not lie"},
    {"NotificationAtAnObject", with("99999.4.0.1\"", "99999.3.1\""), "lies within \""},
    {"OidThatIsNone", with("99999.4.0.1\"", "99999.4.0.\""), "notifications[0].oid"},
};

INSTANTIATE_TEST_SUITE_P(File, MibNotificationRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.name; });

TEST(DeliveredMib, SaysWhichTimeOfAnAlarmIsADateAndTime)
{
    const auto mib = MibDescription::load(sourceFile("mibs/KEL-TALVIK-MIB.json"));
    const ObjectId fixed = {1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1};
    const ObjectId own = {1, 3, 6, 1, 4, 1, 99999, 2, 251, 20, 1, 3};

    for (const auto& base : {fixed, own}) {
        for (unsigned long tag = 1; tag <= 14; ++tag) {
            auto id = base;
            id.push_back(tag);
            const auto* object = mib.notificationObject(id);
            ASSERT_NE(object, nullptr) << talvik::toText(id);
            EXPECT_EQ(object->isDateAndTime, base == fixed && tag == 8) << talvik::toText(id);
        }
    }
    EXPECT_EQ(mib.notificationObjects().size(), 28u);
}

TEST(DeliveredMib, HasTheNotificationsWithAllTheirObjects)
{
    const auto mib = MibDescription::load(sourceFile("mibs/KEL-TALVIK-MIB.json"));
    const std::pair<ObjectId, const char*> rows[] = {
        {{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 2, 1, 0, 1}, "talvikAlarm"},
        {{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 2, 1, 0, 2}, "talvikTest"},
        {{1, 3, 6, 1, 4, 1, 99999, 2, 251, 20, 1, 2, 1}, "talvikOwnAlarmOther"},
    };
    for (const auto& [id, name] : rows) {
        const auto* notification = mib.notification(id);
        ASSERT_NE(notification, nullptr) << name;
        EXPECT_EQ(notification->name, name);
        EXPECT_EQ(notification->objects.size(), 14u) << name;
    }
}

}  // namespace
