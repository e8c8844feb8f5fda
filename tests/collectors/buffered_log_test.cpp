#include "collectors/feature/buffered_log.h"
#include "restcache/store.h"
#include "support/alloc.h"
#include "support/build.h"

using BufferedLog = BUILDER_TEST;

static std::string times(size_t count, const std::string &text)
{
    std::string all;
    for (size_t i = 0; i < count; i++)
        all += text;
    return all;
}

// A control byte takes six in the document, and so much room is made for each byte: two entries of 591 fit the first
// buffer, a third does not, and after one of 170 the end does not.
TEST_F(BufferedLog, HoldsWholeEntriesOrNothing)
{
    const std::string controls(591, '\1'), escaped = "\"" + times(591, "\\u0001") + "\"", text(591, 'x');
    struct {
        std::vector<std::string> log;
        int noMemory; // allocation that fails; -1: none
        std::string entries;
        const char *line; // error
        bool stored = true;
    } cases[] = {
        {std::vector<std::string>(100001, "x"), -1, "\"x\"" + times(99998, ",\"x\""), ""}, // no more are taken
        {{controls, controls, text}, 2, escaped + "," + escaped, "realloc failed at count=2\n"},
        {{controls, controls, std::string(170, '\1')}, 2, "", "realloc failed for footer, truncating\n", false},
    };
    ASSERT_EQ(restapi_db_operation(REST_DB_CREATE, nullptr, nullptr), 0);
    for (const auto &one : cases) {
        logClear();
        state.log = one.log;
        (void)restapi_db_operation(REST_DB_DELETE, "bufferedLog", nullptr); // there may be none
        allocFailAt(one.noMemory, ALLOC_OWN);
        EXPECT_EQ(get_buffered_log(&handle), one.stored ? 0 : -1);
        EXPECT_EQ(allocFailStop(), one.noMemory >= 0) << one.line;
        EXPECT_EQ(cacheRead("bufferedLog"),
                  one.stored ? "{\"bufferedLog\":[" + one.entries +
                                   R"(],"resp":{"respCode":0,"respMsg":"Success","status":"success"}})"
                             : "");
        EXPECT_EQ(logText(),
                  *one.line == '\0' ? "" : std::string("(ERROR) get_buffered_log: get_buffered_log: ") + one.line);
    }
}
