#include "switch/cli.h"

#include "fixture.h"
#include "runtime/result.h"

#include <atomic>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

using CLI = SWITCH_TEST;

namespace {
// A heading of 14 lines.
const std::string BOOTVAR_HEADER =
    "\nImage Descriptions\n\n active :\n backup :\n\n\nImages currently available on Flash\n\n\n"
    "----\n unit      active      backup     current-active        next-active\n----\n\n";
const std::string BOOTVAR_ROWS = "    1    7.1.0.14     7.1.0.9           7.1.0.14           7.1.0.14\n"
                                 "    2    7.1.0.15     7.1.0.8           7.1.0.15           7.1.0.16\n";

int failingLockOperation = 0;

// "result count|unit image1 image2 image3 image4|..."
std::string bootvarRead(CLIENT_HANDLE_T *handle, uint32_t capacity)
{
    BOOTVAR_ROW_T rows[4] = {};
    uint32_t count = capacity;
    std::string text = std::to_string(bootvarGet(handle, rows, &count));
    text += " " + std::to_string(count);
    for (uint32_t i = 0; i < count; i++)
        text += "|" + std::to_string(rows[i].unit) + " " + rows[i].image1 + " " + rows[i].image2 + " " +
                rows[i].image3 + " " + rows[i].image4;
    return text;
}
} // namespace

// Stands before the C library's, for locks that fail.
int flock(int descriptor, int operation) noexcept
{
    if (operation == failingLockOperation)
        return -1;
    return reinterpret_cast<decltype(flock) *>(dlsym(RTLD_NEXT, "flock"))(descriptor, operation);
}

TEST_F(CLI, OpenFailureIsLoggedUnderTheReadersName)
{
    spoilCommand("show slot", VS_NO_FILE);
    vsTextSet("show slot", "text\n");
    std::string path = PathGet(PATH_SHOW_SLOT);
    const std::string expected[] = {"(ERROR) reader: can not open file:" + path + "\n",
                                    "(ERROR) reader: Can not open file:" + path + "\n",
                                    "(ERROR) reader: can not open " + path + "\n", ""};
    for (int line = SHOW_OPEN_LOWER; line <= SHOW_OPEN_SILENT; line++) {
        logClear();
        SHOW_FILE_T show;
        SHOW_REQUEST_T request = {"reader", "show slot", PATH_SHOW_SLOT};
        request.name = SHOW_NAME_RANDOM;
        request.openLine = static_cast<SHOW_OPEN_LINE>(line);
        EXPECT_EQ(showFileRun(&show, &handle, request), RESULT_OPEN_FAILED);
        std::string numbered = show.path; // the number comes straight after the name
        ASSERT_EQ(numbered.compare(0, path.size(), path), 0);
        std::string log = logText();
        size_t at = log.find(numbered);
        EXPECT_EQ(at == std::string::npos ? log : log.replace(at, numbered.size(), path), expected[line]);
    }
    vsObserverSet( // nobody can lay a file there while the command runs
        [](void *, const char *, const char *, bool) {
            EXPECT_EQ(open(PathGet(PATH_SHOW_SLOT), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666), -1);
        },
        nullptr);
    EXPECT_EQ(cliShowExecuteToFile(&handle, "show slot", path.c_str()), RESULT_OK);
    vsObserverSet(nullptr, nullptr);
    EXPECT_FALSE(fileExists(path));
}

TEST_F(CLI, LinesComeInPiecesOrCut)
{
    vsTextSet("show slot", "0123456789\r\nab\r\n\n0123456\r\nlast");
    SHOW_FILE_T show;
    ASSERT_EQ(showFileRun(&show, &handle, {"reader", "show slot", PATH_SHOW_SLOT}), 0);
    char line[8];
    std::string pieces;
    while (showFileLine(&show, line, sizeof line))
        pieces += std::string(line) + "|";
    EXPECT_EQ(pieces, "0123456|789\r\n|ab\r\n|\n|0123456|\r\n|last|");
    showFileRewind(&show);
    std::string cut;
    while (showFileLineCut(&show, line, sizeof line))
        cut += std::string(line) + "|";
    EXPECT_EQ(cut, "0123456|ab||0123456|last|");
    showFileRewind(&show);
    EXPECT_TRUE(showFileSkipTo(&show, "ab", line, sizeof line));
    EXPECT_FALSE(showFileSkipTo(&show, "ab", line, sizeof line));
    EXPECT_STREQ(line, "last");
}

TEST_F(CLI, BootvarRowsBeginAfterFourteenLines)
{
    const std::string longName(700, 'x');
    struct ROW_T {
        const char *what;
        std::string text;
        uint32_t capacity;
        const char *expected;
    };
    const std::string one = "|1 7.1.0.14 7.1.0.9 7.1.0.14 7.1.0.14";
    const std::string two = one + "|2 7.1.0.15 7.1.0.8 7.1.0.15 7.1.0.16";
    const std::string twoRows = "0 2" + two, oneRow = "0 1" + one;
    const ROW_T rows[] = {
        {"room for one", BOOTVAR_HEADER + BOOTVAR_ROWS, 1, oneRow.c_str()},
        {"CR LF", withCrlf(BOOTVAR_HEADER + BOOTVAR_ROWS), 4, twoRows.c_str()},
        {"row among the header lines", BOOTVAR_ROWS + BOOTVAR_ROWS, 4, "0 0"},
        {"four fields end the table", BOOTVAR_HEADER + "1 a b c\n" + BOOTVAR_ROWS, 4, "0 0"},
        {"a long name does not shift the next", BOOTVAR_HEADER + "1 " + longName + " b c d\n", 4,
         "0 1|1 xxxxxxxxxxx b c d"},
        {"an over-long row ends in its first piece", BOOTVAR_HEADER + "1 " + longName + " " + longName + " c d\n", 4,
         "0 0"},
    };
    for (const ROW_T &row : rows) {
        vsTextSet("show bootvar", row.text);
        EXPECT_EQ(bootvarRead(&handle, row.capacity), row.expected) << row.what;
        EXPECT_FALSE(fileExists(PathGet(PATH_SHOW_BOOTVAR))) << row.what;
    }
    EXPECT_EQ(logText(), "");
}

TEST_F(CLI, ManagementValuesStandAtTheirColumns)
{
    //  0         1         2         3         4         5
    //  0123456789012345678901234567890123456789012345678901234567
    const std::string text = "IPv4 Management Interface.......................... 20\n"
                             "IP Address.................................... 10.1.2.3\n"
                             "Subnet Mask................................... 255.255.0.0\n"
                             "Method........................................ DHCP\n"
                             "Default Gateway............................... \n" // no word: as the caller set it
                             "  IP Address.................................. 9.9.9.9\n"
                             "Subnet\n";
    vsTextSet("show ip management", withCrlf(text));
    MANAGEMENT_PORT_T got = {1, "none", "", "", "0.0.0.0"};
    EXPECT_EQ(managementPortIPv4ParametersGetSafe(&handle, &got), 0);
    EXPECT_EQ(std::to_string(got.vlan) + " " + got.address + " " + got.mask + " " + got.method + " " + got.gateway,
              "20 10.1.2.3 255.255.0.0 DHCP 0.0.0.0");
}

TEST_F(CLI, ManagementVlanIsOneUnlessSaidOtherwise)
{
    int vlan = 9;
    vsTextSet("show ip management", "IPv4 Management Interface..........\nMethod\n");
    EXPECT_EQ(managementVlanGet(&handle, &vlan), 0);
    EXPECT_EQ(vlan, 1);
    vsTextSet("show ip management", "IPv4 Management Interface.......................... 4093\n");
    EXPECT_EQ(managementVlanGet(&handle, &vlan), 0);
    EXPECT_EQ(vlan, 4093);
    fileWrite(PathGet(PATH_SHOW_IP_MANAGEMENT), "stale"); // goes also when the command fails
    failCall("show ip management", -1);
    EXPECT_EQ(managementVlanGet(&handle, &vlan), RESULT_OPEN_FAILED);
    EXPECT_EQ(vlan, 1);
    EXPECT_EQ(logText(), "(ERROR) platformRun: Show cmd failed: show ip management\n"
                         "(ERROR) cliShowExecuteToFile: Execute show cmd faile, result:-1\n"
                         "(ERROR) managementPortIPv4ParametersGet: can not open file:" +
                             std::string(PathGet(PATH_SHOW_IP_MANAGEMENT)) + "\n");
}

TEST_F(CLI, SafeReaderWaitsForTheLockAndKeepsItsFile)
{
    vsTextSet("show bootvar", BOOTVAR_HEADER + BOOTVAR_ROWS);
    int other = open(PathGet(PATH_BOOTVAR_LOCK), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    ASSERT_EQ(flock(other, LOCK_EX), 0);
    std::atomic<bool> begun{false};
    std::atomic<int> result{-1};
    std::thread reader([&] {
        BOOTVAR_ROW_T rows[4];
        uint32_t count = 4;
        begun = true;
        result = bootvarGetSafe(&handle, rows, &count) == 0 ? static_cast<int>(count) : -2;
    });
    while (!begun)
        std::this_thread::yield();
    for (int i = 0; i < 1000; i++)
        std::this_thread::yield();
    EXPECT_EQ(vsCallCount("show bootvar"), 0U);
    EXPECT_EQ(flock(other, LOCK_UN), 0);
    reader.join();
    EXPECT_EQ(result, 2);
    EXPECT_TRUE(fileExists(PathGet(PATH_BOOTVAR_LOCK)));
    EXPECT_EQ(flock(other, LOCK_EX | LOCK_NB), 0); // given back
    close(other);
}

TEST_F(CLI, FailingLocksDiscardTheResult)
{
    vsTextSet("show bootvar", BOOTVAR_HEADER + BOOTVAR_ROWS);
    vsTextSet("show ip management", "");
    BOOTVAR_ROW_T rows[4];
    uint32_t count = 4;
    MANAGEMENT_PORT_T got = {};
    failingLockOperation = LOCK_EX;
    EXPECT_EQ(bootvarGetSafe(&handle, rows, &count), RESULT_FAILED);
    EXPECT_EQ(vsCallCount("show bootvar"), 0U);
    failingLockOperation = LOCK_UN;
    EXPECT_EQ(managementPortIPv4ParametersGetSafe(&handle, &got), RESULT_FAILED);
    EXPECT_EQ(vsCallCount("show ip management"), 1U);
    failingLockOperation = 0;
    EXPECT_EQ(bootvarGetSafe(&handle, rows, &count), 0);
    ASSERT_EQ(remove(PathGet(PATH_MGMT_PORT_LOCK)), 0);
    ASSERT_EQ(mkdir(PathGet(PATH_MGMT_PORT_LOCK), 0755), 0); // a folder does not open for writing: no line
    EXPECT_EQ(managementPortIPv4ParametersGetSafe(&handle, &got), RESULT_FAILED);
    EXPECT_EQ(logText(), "(ERROR) bootvarGetSafe: File lock failed\n"
                         "(ERROR) managementPortIPv4ParametersGetSafe: File unlock failed\n");
}
