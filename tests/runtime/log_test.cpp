// The logger: what passes the threshold, what a line looks like, when the file is rotated.
#include "runtime/log.h"

#include "runtime/paths.h"
#include "runtime/process_state.h"
#include "support/child.h"
#include "support/root.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

static const std::string HEADER = "2026-03-01 08:00:00.000 (INFO): kelo_cgi: "; // its length is what counts
static constexpr size_t LIMIT = 1048576;

TEST(Log, DigitOfTheLevelFileDecides)
{
    // Its content before the logger starts (null: no file), and then; the threshold.
    static const struct {
        const char *content, *after;
        int threshold;
    } rows[] = {{nullptr, "6\0\0\0", 6}, {"", "6\0\0\0", 6},        {"x", "6\0\0\0", 6}, {"7\n", "7\n\0\0", 7},
                {"3", "3\0\0\0", 3},     {"0123456789", "0123", 0}, {"9999", "9999", 9}, {"\xff", "6\0\0\0", 6}};
    for (const auto &row : rows) {
        TEST_ROOT_T root;
        remove(PathGet(PATH_LOG_LEVEL));
        if (row.content != nullptr)
            fileWrite(PathGet(PATH_LOG_LEVEL), row.content);
        LogInit(LOG_OPTION_FILE, 8, "kelo_cgi");
        EXPECT_EQ(fileRead(PathGet(PATH_LOG_LEVEL)), std::string(row.after, 4));
        for (int level = 0; level < 10; level++)
            EXPECT_EQ(LogEnabled(level), level <= row.threshold) << level;
    }
}

TEST(Log, LinesCarryTimeLevelIdentityAndNoLineEndOfTheirOwn)
{
    TEST_ROOT_T root;
    setenv("TZ", "UTC", 1);
    tzset();
    logLevelSet('9');
    LogWrite(LOG_LEVEL_INFO, "[DmInit:%d] no line end", 91);
    LogWrite(LOG_LEVEL_WARN, "[f:1] next\r\n");
    LogWrite(5, "five\n");
    LogWrite(8, "eight\n");
    LogWrite(-1, "below\n");
    EXPECT_EQ(fileRead(PathGet(PATH_LOG)), "2026-03-01 08:00:00.000 (INFO): kelo_cgi: [DmInit:91] no line end"
                                           "2026-03-01 08:00:00.000 (WARN): kelo_cgi: [f:1] next\r\n"
                                           "2026-03-01 08:00:00.000 (NOTICE): kelo_cgi: five\n"
                                           "2026-03-01 08:00:00.000 (): kelo_cgi: eight\n"
                                           "2026-03-01 08:00:00.000 (): kelo_cgi: below\n");
    unsetenv("TZ");
    tzset();
}

// A second process does what `echo 7 > FILE` does, as fast as it can, while two threads log.
TEST(Log, LevelFileRewrittenByAnotherProcessLosesNoLine)
{
    TEST_ROOT_T root;
    std::string level = PathGet(PATH_LOG_LEVEL);
    pid_t writer = childStart([&level]() {
        for (unsigned round = 0;; round++) {
            int fd = open(level.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
            if (fd < 0 || write(fd, round % 2 == 0 ? "3\n" : "7\n", 2) != 2)
                return 1;
            close(fd);
        }
    });
    auto logMany = []() {
        for (int i = 0; i < 3000; i++) {
            LOG_ERROR("line\n");
            LOG_DEBUG("perhaps\n");
        }
    };
    std::thread first(logMany);
    std::thread second(logMany);
    first.join();
    second.join();
    ASSERT_EQ(kill(writer, SIGKILL), 0);
    EXPECT_EQ(childEnd(childWait(writer)), "signal 9");

    std::string text = logText();
    size_t errors = 0;
    for (size_t begin = 0; begin < text.size(); begin = text.find('\n', begin) + 1) {
        std::string line = text.substr(begin, text.find('\n', begin) - begin);
        ASSERT_TRUE(line == "(ERROR) operator(): line" || line == "(DEBUG) operator(): perhaps") << line;
        errors += line[1] == 'E' ? 1 : 0;
    }
    EXPECT_EQ(errors, 6000u);
}

TEST(Log, RotatesOnlyAboveOneMebibyte)
{
    TEST_ROOT_T root;
    std::string line = "[f:1] the line that reaches the limit\n";
    fileWrite(PathGet(PATH_LOG), std::string(LIMIT - HEADER.size() - line.size(), '.'));
    fileWrite(PathGet(PATH_LOG_OLD), "older");
    LogInit(LOG_OPTION_FILE, 8, "kelo_cgi");
    LogWrite(LOG_LEVEL_INFO, "%s", line.c_str());
    EXPECT_EQ(fileRead(PathGet(PATH_LOG)).size(), LIMIT);
    EXPECT_EQ(fileRead(PathGet(PATH_LOG_OLD)), "older");

    LogWrite(LOG_LEVEL_INFO, "x");
    EXPECT_EQ(fileRead(PathGet(PATH_LOG)), "");
    EXPECT_EQ(fileRead(PathGet(PATH_LOG_OLD)).size(), LIMIT + HEADER.size() + 1);
    LogWrite(LOG_LEVEL_INFO, "[f:1] new\n");
    EXPECT_EQ(logText(), "(INFO) f: new\n");
}

// A log that was removed, moved away or replaced by another user's object is begun anew with the next line; a folder in
// the old one's place does not stop rotation; half a line of an earlier process is ended.
TEST(Log, GoesOnWhereItsFileWasTakenAway)
{
    TEST_ROOT_T root;
    const std::string path = PathGet(PATH_LOG), old = PathGet(PATH_LOG_OLD);
    auto takeAway = [&](int how) {
        how == 0 ? (void)remove(path.c_str()) : (void)rename(path.c_str(), old.c_str());
        if (how == 2)
            mkdir(path.c_str(), 0755);
        if (how == 3)
            (void)!symlink(old.c_str(), path.c_str());
        if (how == 4) { // one file under both names: a rename would do nothing
            fileWrite(path, "");
            std::filesystem::remove_all(path + ".bad");
            (void)!link(path.c_str(), (path + ".bad").c_str());
        }
        if (how > 1)
            (void)!lchown(path.c_str(), 65534, 65534);
    };
    for (int how = 0; how < (geteuid() == 0 ? 5 : 2); how++) {
        takeAway(how);
        LOG_ERROR("next\n");
        std::string log = fileRead(path);
        EXPECT_NE(log.find("] next\n"), std::string::npos) << how;
        EXPECT_EQ(log.find("moved aside as " + path + ".bad") != std::string::npos, how > 1) << how;
    }
    std::filesystem::remove_all(old);
    std::filesystem::create_directories(old + "/full");
    fileWrite(path, std::string(LIMIT - 1, '.') + "\n");
    LogInit(LOG_OPTION_FILE, 8, "kelo_cgi");
    LOG_ERROR("over\n");
    EXPECT_EQ(fileRead(path), "");
    EXPECT_GT(fileRead(old).size(), LIMIT);
    fileWrite(path, "half a li");
    LogInit(LOG_OPTION_FILE, 8, "kelo_cgi");
    EXPECT_EQ(fileRead(path), "half a li\n");
}

TEST(Log, ThreadsThatCrossTheLimitRotateOnce)
{
    TEST_ROOT_T root;
    fileWrite(PathGet(PATH_LOG), std::string(LIMIT - 1000, '.') + "\n");
    LogInit(LOG_OPTION_FILE, 8, "kelo_cgi");
    auto logMany = []() {
        for (int i = 0; i < 500; i++)
            LogWrite(LOG_LEVEL_INFO, "[f:1] line\n");
    };
    std::thread first(logMany);
    std::thread second(logMany);
    first.join();
    second.join();
    std::string old = fileRead(PathGet(PATH_LOG_OLD));
    std::string current = fileRead(PathGet(PATH_LOG));
    EXPECT_GT(old.size(), LIMIT);
    EXPECT_LE(old.size(), LIMIT + HEADER.size() + 11);
    EXPECT_EQ(std::count(old.begin(), old.end(), '\n') + std::count(current.begin(), current.end(), '\n'), 1001);
}

TEST(Log, DestinationsByOptionAndFallBack)
{
    TEST_ROOT_T root;
    std::string output;
    auto tail = [&output]() {
        return output.find(" (") == std::string::npos ? output : output.substr(output.find(" ("));
    };

    LogInit(LOG_OPTION_FILE | LOG_OPTION_STDOUT, 8, "both");
    auto write = []() {
        LogWrite(LOG_LEVEL_INFO, "[f:1] %s %d\n", "text", 5);
        return 0;
    };
    EXPECT_EQ(childRun(write, &output), "exit 0");
    EXPECT_EQ(tail(), " (INFO): both: [f:1] text 5\n");
    EXPECT_EQ(logText(), "(INFO) f: text 5\n");

    remove(PathGet(PATH_LOG));
    ASSERT_EQ(mkdir(PathGet(PATH_LOG), 0755), 0);
    LogInit(LOG_OPTION_FILE, 8, "nofile");
    EXPECT_EQ(childRun(write, &output), "exit 0");
    EXPECT_EQ(tail(), " (INFO): nofile: [f:1] text 5\n");

    processStateReset(); // as before LogInit
    EXPECT_EQ(childRun(write, &output), "exit 0");
    EXPECT_EQ(tail(), " (INFO): : [f:1] text 5\n");
}
