#include "tests/unit/trap/trap_handler_test.h"

namespace {

using namespace std::string_literals;

/// Tag, type code, and value bytes of one cell.
using CellBytes = std::tuple<int, int, std::string>;

std::vector<CellBytes> cellsOf(const CTLVRecordV3& record)
{
    std::vector<CellBytes> cells;
    for (const CTLVCell* cell : *record.pCells) {
        const std::string value(reinterpret_cast<const char*>(cell->pData), cell->sDataLen);
        cells.emplace_back(cell->usTagWord >> 4, cell->usTagWord & 0xF, value);
    }
    return cells;
}

class TrapQuery : public talvik::test::TrapHandlerTest {};

TEST_F(TrapQuery, OfAnEmptyListAnswersNothing)
{
    EXPECT_EQ(query(), 0);

    EXPECT_TRUE(response.oRecords.empty());
    EXPECT_EQ(trapCalls(), Calls({"getAllTrapAddr"}));
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapQuery, AnswersARowCellByCell)
{
    listed({"17", "trap.example.net", 162, 3, 0x01020304, "operator"});

    ASSERT_EQ(query(), 0);

    ASSERT_EQ(response.oRecords.size(), 1U);
    EXPECT_EQ(response[0]->ullRecordId, 0xFFFFFFFFFFFFFFFFULL);
    const std::vector<CellBytes> expected = {
        {1, 2, "trap.example.net\0"s}, {2, 3, "\xA2\0\0\0"s},
        {3, 4, "\1\0\0\0"s},           {4, 2, "17\0"s},
        {5, 3, "\3\0\0\0"s},           {6, 2, "trap.example.net\0"s},
        {7, 3, "\4\3\2\1"s},           {8, 2, "operator\0"s},
    };
    EXPECT_EQ(cellsOf(*response[0]), expected);
    EXPECT_EQ(trapHost.addressesTried, Calls({"trap.example.net"}));
    expectNoLine();
    expectBalancedTraces();
}

TEST_F(TrapQuery, OfAnUnreachableNameShowsZerosInColumnOneAndTheNameInColumnSix)
{
    listed({"17", "gone.example.net", 162, 2, 1, "--"});
    trapHost.unreachable = {"gone.example.net"};

    ASSERT_EQ(query(), 0);

    const std::vector<CellBytes> expected = {
        {1, 2, "0.0.0.0\0"s}, {2, 3, "\xA2\0\0\0"s},         {3, 4, "\1\0\0\0"s}, {4, 2, "17\0"s},
        {5, 3, "\2\0\0\0"s},  {6, 2, "gone.example.net\0"s}, {7, 3, "\1\0\0\0"s}, {8, 2, "--\0"s},
    };
    ASSERT_EQ(response.oRecords.size(), 1U);
    EXPECT_EQ(cellsOf(*response[0]), expected);
}

TEST_F(TrapQuery, OfARowWithoutTextsAnswersTheirTerminatorsAlone)
{
    listed({"", "", 4294967295U, 0, 0, ""});

    ASSERT_EQ(query(), 0);

    const std::vector<CellBytes> expected = {
        {1, 2, "\0"s},       {2, 3, "\xFF\xFF\xFF\xFF"s},
        {3, 4, "\1\0\0\0"s}, {4, 2, "\0"s},
        {5, 3, "\0\0\0\0"s}, {6, 2, "\0"s},
        {7, 3, "\0\0\0\0"s}, {8, 2, "\0"s},
    };
    ASSERT_EQ(response.oRecords.size(), 1U);
    EXPECT_EQ(cellsOf(*response[0]), expected);
}

TEST_F(TrapQuery, CountsTheTextsLengthAlsoAcrossANul)
{
    listed({"1\0007"s, "a", 162, 2, 1, "--"});

    ASSERT_EQ(query(), 0);

    EXPECT_EQ(cellsOf(*response[0])[3], CellBytes(4, 2, "1\0007\0"s));
}

TEST_F(TrapQuery, AnswersEveryRowInTheListsOrderBehindWhatTheResponseHolds)
{
    response.oRecords.push_back(new CTLVRecordV3(5));
    for (const char* index : {"30", "4", "17"}) {
        listed({index, "192.0.2.1", 162, 2, 1, "--"});
    }

    ASSERT_EQ(query(), 0);

    ASSERT_EQ(response.oRecords.size(), 4U);
    EXPECT_EQ(response[0]->ullRecordId, 5U);
    Calls indexes;
    for (std::size_t row = 1; row < 4; ++row) {
        indexes.push_back((*response[row])[4]->toString());
    }
    EXPECT_EQ(indexes, Calls({"30", "4", "17"}));
}

TEST_F(TrapQuery, AnswersTheWholeTableWhateverTheRequestNames)
{
    listed({"1", "192.0.2.1", 162, 2, 1, "--"});
    listed({"2", "192.0.2.2", 162, 2, 1, "--"});
    number(4, 2);

    EXPECT_EQ(query(), 0);
    EXPECT_EQ(response.oRecords.size(), 2U);

    request.clear();
    EXPECT_EQ(query(), 0);
    EXPECT_EQ(response.oRecords.size(), 4U);
}

TEST_F(TrapQuery, ChangesAndChecksNothing)
{
    listed({"1", "192.0.2.1", 162, 2, 1, "--"});

    query();

    EXPECT_EQ(trapCalls(), Calls({"getAllTrapAddr", "TestDomainConnectivity"}));
}

TEST_F(TrapQuery, FailsWhenTheListCannotBeReadAlsoWhenPartOfItCame)
{
    listed({"1", "192.0.2.1", 162, 2, 1, "--"});
    for (const int result : {-1, 1, 0x1000023}) {
        host.reset();
        trapHost.listResult = result;

        EXPECT_EQ(query(), -1);

        EXPECT_EQ(trapCalls(), Calls({"getAllTrapAddr"}));
        expectNoChange();
        expectOnlyLine("OnQueryTable", 0x1002E, "failed to get all trap.");
        expectBalancedTraces();
    }
}

TEST_F(TrapQuery, AppendsTheRowsCellsBehindWhatTheRecordHolds)
{
    handler.makeIntTrapPackage(talvik::test::destinationOf({"9", "a", 1, 2, 3, "u"}), *request[0]);
    handler.makeIntTrapPackage(talvik::test::destinationOf({"8", "b", 1, 2, 3, "u"}), *request[0]);

    ASSERT_EQ(request[0]->pCells->size(), 16U);
    EXPECT_EQ(cellsOf(*request[0])[3], CellBytes(4, 2, "9\0"s));
    EXPECT_EQ(cellsOf(*request[0])[11], CellBytes(4, 2, "8\0"s));
}

TEST_F(TrapQuery, FailsOnATextThatNoCellCanHold)
{
    listed({"1", "192.0.2.1", 162, 2, 1, "--"});
    listed({"2", "192.0.2.1", 162, 2, 1, std::string(65535, 'u')});

    EXPECT_EQ(talvik::test::textOfThrown([this] { query(); }),
              "CKEL_Exception: CTLVCell can't hold 65536 bytes! tag equal to 8");

    ASSERT_EQ(response.oRecords.size(), 1U);
    EXPECT_EQ(response[0]->pCells->size(), 8U);
    expectBalancedTraces();
}

}  // namespace
