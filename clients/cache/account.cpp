#include "cache/account.h"

// An age is counted by the clock that nobody sets: the account says by both clocks when it was written.

#include "runtime/files.h"
#include "runtime/paths.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>

static constexpr size_t ACCOUNT_SIZE_MAX = 4 * 1024 * 1024;
static constexpr double LATE_CYCLES = 2; // an account or a document that is so late is too late
static constexpr double LATE_SECONDS_MIN = 5;

static double steadySeconds()
{
    struct timespec now;

    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

double accountNumber(const cJSON *object, const char *member, double missing)
{
    const cJSON *value = cJSON_GetObjectItemCaseSensitive(object, member);

    return cJSON_IsNumber(value) ? value->valuedouble : missing;
}

std::string accountText(const cJSON *object, const char *member)
{
    const cJSON *value = cJSON_GetObjectItemCaseSensitive(object, member);

    return cJSON_IsString(value) ? value->valuestring : "";
}

// The 22nd field of a process's state is the time of its start; the second one may hold blanks and parentheses.
static bool processRuns(int process, double start)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;

    if (!std::getline(file, text) || text.rfind(')') == std::string::npos)
        return false;
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    std::string field;
    for (int number = 3; number <= 22; number++)
        if (!(fields >> field) || (number == 3 && (field == "Z" || field == "X")))
            return false;
    return std::to_string(static_cast<uint64_t>(start)) == field;
}

static double lateSeconds(const cJSON *daemon)
{
    return std::max(LATE_CYCLES * accountNumber(daemon, "cycleSeconds", 30), LATE_SECONDS_MIN);
}

static ACCOUNT_T accountNone(const std::string &why)
{
    ACCOUNT_T account;

    account.trouble = std::string(PathGet(PATH_STATUS)) + ": " + why;
    return account;
}

ACCOUNT_T accountRead()
{
    ACCOUNT_T account;
    OWNED_FILE file(fileOpenReadOwn(PathGet(PATH_STATUS)));

    if (file == nullptr)
        return accountNone(errno == ENOENT ? "there is none: no daemon has run here" : strerror(errno));
    std::string text(ACCOUNT_SIZE_MAX, '\0');
    text.resize(fread(&text[0], 1, text.size(), file.get()));
    account.tree.reset(cJSON_ParseWithLength(text.data(), text.size()));
    const cJSON *daemon = cJSON_GetObjectItemCaseSensitive(account.tree.get(), "daemon");
    double writtenAt = accountNumber(account.tree.get(), "writtenAt", -1);
    double age = steadySeconds() - accountNumber(account.tree.get(), "writtenMonotonic", 0);
    if (!cJSON_IsObject(daemon) || writtenAt < 0)
        return accountNone("holds no account");

    std::string ago = std::to_string(static_cast<long>(std::max(age, 0.0))) + " s ago";
    account.now = static_cast<int64_t>(writtenAt + std::max(age, 0.0));
    account.state = ACCOUNT_ALIVE;
    if (!processRuns(static_cast<int>(accountNumber(daemon, "pid", 0)), accountNumber(daemon, "processStart", 0))) {
        account.state = ACCOUNT_DEAD;
        account.now = static_cast<int64_t>(time(nullptr)); // perhaps from before the machine's last start
        account.trouble = "the daemon does not run; this is its last account";
    } else if (age > lateSeconds(daemon)) {
        account.state = ACCOUNT_STALE;
        account.trouble = "the daemon runs, but wrote its account " + ago + ": it hangs";
    }
    return account;
}

std::string accountDocumentTrouble(const ACCOUNT_T &account, const cJSON *document)
{
    const cJSON *daemon = cJSON_GetObjectItemCaseSensitive(account.tree.get(), "daemon");
    double due = accountNumber(document, "dueAt", -1);

    if (accountNumber(document, "failures", 0) > 0)
        return "failed";
    if (due >= 0 && static_cast<double>(account.now) > due + lateSeconds(daemon))
        return "overdue";
    return "";
}

std::string accountCommandTrouble(const cJSON *command)
{
    if (accountNumber(command, "result", 0) != 0)
        return "failed";
    return cJSON_IsTrue(cJSON_GetObjectItemCaseSensitive(command, "rowsMissed")) ? "no rows" : "";
}
