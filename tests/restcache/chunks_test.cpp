#include "restcache/chunks.h"

#include "fakes.h"
#include "runtime/process_state.h"
#include "support/alloc.h"

#include <algorithm>
#include <gtest/gtest.h>

static constexpr DOCUMENT_T table[] = {
    document("neighbors", "devices", BUILDER(fakeWrites), EVERY_CYCLE).inChunks(CHUNK_NEIGHBORS),
    document("groups", "groupList", BUILDER(fakeWrites), EVERY_CYCLE).inChunks(CHUNK_MULTICAST_GROUPS),
};
static const DOCUMENT_T &rowOf(CHUNK_KIND kind)
{
    return table[kind == CHUNK_NEIGHBORS ? 0 : 1];
}

struct Chunks : testing::TestWithParam<CHUNK_KIND> {
    TEST_ROOT_T root;
    void SetUp() override
    {
        documentTableSet(table, std::size(table));
        ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    }

    std::string name(int index) const
    {
        return rowOf(GetParam()).name + ("/" + std::to_string(index));
    }

    // The record that so many rows give; "" when there is none.
    std::string record(int index, const std::vector<std::string> &rows, bool last) const
    {
        std::string text = std::string("{\"") + rowOf(GetParam()).payloadKey + "\":{\"rows\":[";
        for (size_t i = 0; i < rows.size(); i++)
            text += (i == 0 ? "" : ",") + rows[i];
        return text + "],\"chunkIndex\":" + std::to_string(index) + ",\"isLastChunk\":" + (last ? "true" : "false") +
               "},\"resp\":{\"respCode\":0,\"respMsg\":\"Success\",\"status\":\"success\"}}";
    }
    int push(const std::vector<std::string> &rows) const
    {
        CHUNK_SINK_T sink;
        int result = chunkBegin(&sink, GetParam());
        for (const std::string &row : rows)
            chunkRowAdd(&sink, row.data(), row.size());
        return result != 0 ? result : chunkEnd(&sink);
    }
};
INSTANTIATE_TEST_SUITE_P(Documents, Chunks, testing::Values(CHUNK_NEIGHBORS, CHUNK_MULTICAST_GROUPS),
                         [](const auto &kind) { return std::string(rowOf(kind.param).name); });

TEST_P(Chunks, HoldFiveHundredRowsEach)
{
    for (int count : {0, 1, 499, 500, 501, 1201}) {
        std::vector<std::string> rows;
        for (int i = 0; i < count; i++)
            rows.push_back(std::to_string(i));
        ASSERT_EQ(push(rows), 0);
        int last = std::max(0, (count - 1) / 500);
        for (int index = 0; index <= last; index++) {
            auto from = rows.begin() + index * 500;
            auto to = index == last ? rows.end() : from + 500;
            EXPECT_EQ(cacheRead(name(index)), record(index, {from, to}, index == last)) << count;
        }
        EXPECT_EQ(cacheRead(name(last + 1)), "") << count;
    }
}

// Two rows share a chunk when their lengths and 2 make at most 196607 bytes.
TEST_P(Chunks, HoldLessThan196608Bytes)
{
    for (size_t second : {size_t(96605), size_t(96606)}) {
        std::string first(100000, '1'), other(second, '2');
        ASSERT_EQ(push({first, other}), 0);
        bool together = second == 96605;
        EXPECT_EQ(cacheRead(name(0)), together ? record(0, {first, other}, true) : record(0, {first}, false));
        EXPECT_EQ(cacheRead(name(1)), together ? "" : record(1, {other}, true));
    }
}

TEST_P(Chunks, RowBeyondEveryChunk)
{
    std::string largest(196605, '1');
    ASSERT_EQ(push({largest}), 0);
    EXPECT_EQ(cacheRead(name(0)), record(0, {largest}, true));
    int result = push({"1", largest + "1", "2"});
    if (GetParam() == CHUNK_NEIGHBORS) {
        EXPECT_EQ(result, 10000);
        EXPECT_EQ(cacheRead(name(0)), record(0, {largest}, true));
        EXPECT_EQ(logText(), "");
    } else {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(cacheRead(name(0)), record(0, {"1", "2"}, true));
        EXPECT_EQ(logText(), "(ERROR) mgeSinkEmitRow: groups: oversized row 196606 >= 196608 bytes, "
                             "dropping\n");
    }
}

// The first push of a process knows nothing of earlier neighbours' chunks, and takes 256 of the groups' for written.
TEST_P(Chunks, OfAnEarlierPushAreDeleted)
{
    ASSERT_EQ(push(std::vector<std::string>(1501, "1")), 0);
    std::string list = changeList();
    ASSERT_EQ(push(std::vector<std::string>(501, "1")), 0);
    EXPECT_EQ(changeList().substr(list.size()), name(1) + "\n" + name(2) + "\n" + name(3) + "\n");
    EXPECT_EQ(cacheRead(name(2)) + cacheRead(name(3)), "");

    processStateReset(); // as after a restart of the daemon
    list = changeList();
    ASSERT_EQ(push({"1"}), 0);
    bool groups = GetParam() == CHUNK_MULTICAST_GROUPS;
    std::string tail = changeList().substr(list.size());
    EXPECT_EQ(std::count(tail.begin(), tail.end(), '\n'), groups ? 256 : 1);
    EXPECT_EQ(cacheRead(name(1)).empty(), groups);
}
