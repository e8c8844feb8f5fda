#include "devmgrctl.h"

// The words about the daemon's account: status, commands, metrics.

#include "cache/account.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

struct SHOWN_ROW_T {
    const cJSON *row; // of the account
    std::string trouble;
};

static const char *mark(const std::string &trouble)
{
    bool terminal = isatty(STDOUT_FILENO) != 0;

    return trouble.empty() || !terminal ? "" : trouble == "overdue" ? "\033[33m" : "\033[31m";
}

static const char *markEnd(const std::string &trouble)
{
    return *mark(trouble) == '\0' ? "" : "\033[0m";
}

static std::string agoText(const ACCOUNT_T &account, const cJSON *row, const char *member)
{
    double at = accountNumber(row, member, -1);

    return at < 0 ? "-" : durationText(static_cast<double>(account.now) - at);
}

static std::string dueText(const ACCOUNT_T &account, const cJSON *document)
{
    double due = accountNumber(document, "dueAt", -1);
    double left = due - static_cast<double>(account.now);

    if (due < 0)
        return accountText(document, "due");
    return left >= 0 ? "in " + durationText(left) : durationText(-left) + " late";
}

static std::string tookText(double microseconds)
{
    char text[32];

    if (microseconds < 0)
        return "-";
    if (microseconds < 1e6)
        snprintf(text, sizeof(text), "%.1f ms", microseconds / 1e3);
    else
        snprintf(text, sizeof(text), "%.1f s", microseconds / 1e6);
    return text;
}

static std::string numberText(const cJSON *row, const char *member)
{
    double value = accountNumber(row, member, -1e18);

    return value < -1e17 ? "-" : std::to_string(static_cast<long long>(value));
}

static const cJSON *memberOf(const ACCOUNT_T &account, const char *name)
{
    return cJSON_GetObjectItemCaseSensitive(account.tree.get(), name);
}

// Whether the daemon has no session, or has been at one thing for longer than a document takes.
static bool daemonIsLate(const ACCOUNT_T &account)
{
    constexpr double LATE_SECONDS = 5;
    const cJSON *daemon = memberOf(account, "daemon");
    const cJSON *doing = cJSON_GetObjectItemCaseSensitive(daemon, "doing");
    const cJSON *session = cJSON_GetObjectItemCaseSensitive(daemon, "session");
    double since = accountNumber(doing, "since", static_cast<double>(account.now));

    return !cJSON_IsTrue(cJSON_GetObjectItemCaseSensitive(session, "registered")) ||
           (!cJSON_IsTrue(cJSON_GetObjectItemCaseSensitive(doing, "isIdle")) &&
            static_cast<double>(account.now) - since >= LATE_SECONDS);
}

// What the daemon does, in two or three lines.
static void daemonPrint(const ACCOUNT_T &account)
{
    const cJSON *daemon = memberOf(account, "daemon");
    const cJSON *doing = cJSON_GetObjectItemCaseSensitive(daemon, "doing");
    const cJSON *session = cJSON_GetObjectItemCaseSensitive(daemon, "session");
    const cJSON *cache = cJSON_GetObjectItemCaseSensitive(daemon, "cache");
    double anew = accountNumber(cache, "begunAnew", 0);

    printf("devmgr %s, process %s, started %s ago; cycle %s, last one ended %s ago, took %s\n",
           accountText(daemon, "version").c_str(), numberText(daemon, "pid").c_str(),
           agoText(account, daemon, "startedAt").c_str(), numberText(daemon, "cycle").c_str(),
           agoText(account, daemon, "cycleEndedAt").c_str(),
           tookText(accountNumber(daemon, "cycleMicroseconds", -1)).c_str());
    printf("doing: %s", accountText(doing, "text").c_str());
    if (accountNumber(doing, "since", -1) >= 0)
        printf(" for %s", agoText(account, doing, "since").c_str());
    printf("; session %s (tries: %s)",
           cJSON_IsTrue(cJSON_GetObjectItemCaseSensitive(session, "registered")) ? "registered" : "not registered",
           numberText(session, "tries").c_str());
    if (anew > 0)
        printf("; cache begun anew %.0f times, last because of: %s", anew, accountText(cache, "lastReason").c_str());
    putchar('\n');
}

static bool troubleFirst(const SHOWN_ROW_T &one, const SHOWN_ROW_T &other)
{
    return !one.trouble.empty() && other.trouble.empty();
}

static std::string resultText(const cJSON *document)
{
    std::string text = numberText(document, "result");

    return accountNumber(document, "failures", 0) > 0 ? text + " (" + numberText(document, "failures") + " in a row)"
                                                      : text;
}

static void documentPrint(const ACCOUNT_T &account, const SHOWN_ROW_T &shown)
{
    printf("%s%-26s %8s %9s  %-17s %8s  %-14s %s%s\n", mark(shown.trouble), accountText(shown.row, "name").c_str(),
           agoText(account, shown.row, "builtAt").c_str(),
           tookText(accountNumber(shown.row, "microseconds", -1)).c_str(), resultText(shown.row).c_str(),
           agoText(account, shown.row, "changedAt").c_str(), dueText(account, shown.row).c_str(), shown.trouble.c_str(),
           markEnd(shown.trouble));
}

// All that the account says of one document.
static int documentTell(const ACCOUNT_T &account, const std::string &name)
{
    const cJSON *row;

    cJSON_ArrayForEach(row, memberOf(account, "documents"))
    {
        if (accountText(row, "name") != name)
            continue;
        std::string wrong = accountDocumentTrouble(account, row);
        printf("%s: %s\n", name.c_str(), wrong.empty() ? "well" : wrong.c_str());
        printf("built     %s ago, took %s, result %s\n", agoText(account, row, "builtAt").c_str(),
               tookText(accountNumber(row, "microseconds", -1)).c_str(), resultText(row).c_str());
        printf("failed    %s in a row, last failing result %s\n", numberText(row, "failures").c_str(),
               numberText(row, "lastFailure").c_str());
        printf("changed   %s ago\n", agoText(account, row, "changedAt").c_str());
        printf("due       %s (%s)\n", dueText(account, row).c_str(), accountText(row, "due").c_str());
        return wrong.empty() ? CTL_OK : CTL_FOUND;
    }
    trouble("the daemon has no document '" + name + "'");
    return CTL_TROUBLE;
}

// A missing or dead daemon's account is told before anything of it is shown.
static ACCOUNT_T accountTake(int *status)
{
    ACCOUNT_T account = accountRead();

    *status = account.state == ACCOUNT_ALIVE ? CTL_OK : account.state == ACCOUNT_NONE ? CTL_TROUBLE : CTL_FOUND;
    if (account.state != ACCOUNT_ALIVE)
        trouble(account.trouble);
    return account;
}

static std::vector<SHOWN_ROW_T> rowsJudge(const ACCOUNT_T &account, const char *member,
                                          std::string (*judge)(const ACCOUNT_T &account, const cJSON *row))
{
    std::vector<SHOWN_ROW_T> rows;
    const cJSON *row;

    cJSON_ArrayForEach(row, memberOf(account, member)) rows.push_back({row, judge(account, row)});
    std::stable_sort(rows.begin(), rows.end(), troubleFirst);
    return rows;
}

static std::string commandJudge(const ACCOUNT_T &, const cJSON *row)
{
    return accountCommandTrouble(row);
}

static void commandPrint(const ACCOUNT_T &account, const SHOWN_ROW_T &shown)
{
    printf("%s%-52s %8s %9s %7s %8s %6s %6s  %s%s\n", mark(shown.trouble), accountText(shown.row, "command").c_str(),
           agoText(account, shown.row, "ranAt").c_str(), tookText(accountNumber(shown.row, "microseconds", -1)).c_str(),
           numberText(shown.row, "result").c_str(), numberText(shown.row, "bytes").c_str(),
           numberText(shown.row, "lines").c_str(), numberText(shown.row, "rows").c_str(), shown.trouble.c_str(),
           markEnd(shown.trouble));
}

static void commandsHead()
{
    printf("%-52s %8s %9s %7s %8s %6s %6s\n", "command", "ran", "took", "result", "bytes", "lines", "rows");
}

int statusWord(const WORDS_T &arguments)
{
    int status;
    ACCOUNT_T account = accountTake(&status);
    size_t commands = 0;

    if (account.tree == nullptr)
        return status;
    if (!arguments.empty())
        return std::max(status, documentTell(account, arguments[0]));
    daemonPrint(account);
    if (daemonIsLate(account))
        status = std::max<int>(status, CTL_FOUND);
    for (const SHOWN_ROW_T &shown : rowsJudge(account, "commands", commandJudge)) {
        if (shown.trouble.empty())
            break;
        if (commands++ == 0)
            commandsHead();
        commandPrint(account, shown);
        status = std::max<int>(status, CTL_FOUND);
    }
    printf("%-26s %8s %9s  %-17s %8s  %s\n", "document", "built", "took", "result", "changed", "due");
    for (const SHOWN_ROW_T &shown : rowsJudge(account, "documents", accountDocumentTrouble)) {
        documentPrint(account, shown);
        if (!shown.trouble.empty())
            status = std::max<int>(status, CTL_FOUND);
    }
    return status;
}

int commandsWord(const WORDS_T &)
{
    int status;
    ACCOUNT_T account = accountTake(&status);

    if (account.tree == nullptr)
        return status;
    commandsHead();
    for (const SHOWN_ROW_T &shown : rowsJudge(account, "commands", commandJudge)) {
        commandPrint(account, shown);
        if (!shown.trouble.empty())
            status = std::max<int>(status, CTL_FOUND);
    }
    return status;
}

// ---- metrics ----

struct METRIC_T {
    const char *name;
    const char *type;
    const char *help;
    const char *member;
    double scale; // the account's unit in seconds or bytes
};

static const METRIC_T documentMetrics[] = {
    {"devmgr_document_built_timestamp_seconds", "gauge", "Time of the last build.", "builtAt", 1},
    {"devmgr_document_changed_timestamp_seconds", "gauge", "Time of the last change of the text.", "changedAt", 1},
    {"devmgr_document_due_timestamp_seconds", "gauge", "Time when the next build is due.", "dueAt", 1},
    {"devmgr_document_build_seconds", "gauge", "Duration of the last build.", "microseconds", 1e-6},
    {"devmgr_document_result", "gauge", "Result of the last build, 0 for success.", "result", 1},
    {"devmgr_document_failures", "gauge", "Builds in a row that failed.", "failures", 1},
};
static const METRIC_T commandMetrics[] = {
    {"devmgr_command_run_timestamp_seconds", "gauge", "Time of the last run.", "ranAt", 1},
    {"devmgr_command_seconds", "gauge", "Duration of the last run.", "microseconds", 1e-6},
    {"devmgr_command_result", "gauge", "Result of the last run, 0 for success.", "result", 1},
    {"devmgr_command_output_bytes", "gauge", "Size of the last text.", "bytes", 1},
    {"devmgr_command_lines", "gauge", "Lines of the last text.", "lines", 1},
    {"devmgr_command_rows", "gauge", "Lines of the last text that were recognised as rows.", "rows", 1},
};
static const METRIC_T daemonMetrics[] = {
    {"devmgr_start_timestamp_seconds", "gauge", "Time of the daemon's start.", "startedAt", 1},
    {"devmgr_cycles_total", "counter", "Refresh cycles begun.", "cycle", 1},
    {"devmgr_cycle_end_timestamp_seconds", "gauge", "Time of the last cycle's end.", "cycleEndedAt", 1},
    {"devmgr_cycle_seconds", "gauge", "Duration of the last complete cycle.", "cycleMicroseconds", 1e-6},
};

static void metricHead(const char *name, const char *type, const char *help)
{
    printf("# HELP %s %s\n# TYPE %s %s\n", name, help, name, type);
}

// A label's value, with what the format wants escaped.
static std::string labelText(const std::string &text)
{
    std::string escaped;

    for (char character : text)
        escaped += character == '"'    ? "\\\""
                   : character == '\\' ? "\\\\"
                   : character == '\n' ? "\\n"
                                       : std::string(1, character);
    return escaped;
}

static void metricsPrint(const METRIC_T &metric, const cJSON *rows, const char *label)
{
    const cJSON *row;

    metricHead(metric.name, metric.type, metric.help);
    cJSON_ArrayForEach(row, rows)
    {
        double value = accountNumber(row, metric.member, -1e18);
        if (value > -1e17)
            printf("%s{%s=\"%s\"} %.15g\n", metric.name, label,
                   labelText(accountText(row, label == std::string("document") ? "name" : "command")).c_str(),
                   value * metric.scale);
    }
}

int metricsWord(const WORDS_T &)
{
    int status;
    ACCOUNT_T account = accountTake(&status);
    const cJSON *daemon = memberOf(account, "daemon");
    const cJSON *row;

    metricHead("devmgr_up", "gauge", "1 when the daemon runs and keeps its account.");
    printf("devmgr_up %d\n", account.state == ACCOUNT_ALIVE ? 1 : 0);
    if (account.tree == nullptr)
        return status;
    for (const METRIC_T &metric : daemonMetrics) {
        double value = accountNumber(daemon, metric.member, -1e18);
        if (value <= -1e17)
            continue;
        metricHead(metric.name, metric.type, metric.help);
        printf("%s %.15g\n", metric.name, value * metric.scale);
    }
    for (const METRIC_T &metric : documentMetrics)
        metricsPrint(metric, memberOf(account, "documents"), "document");
    for (const METRIC_T &metric : commandMetrics)
        metricsPrint(metric, memberOf(account, "commands"), "command");
    metricHead("devmgr_command_rows_missed", "gauge", "1 when lines were there and none was recognised.");
    cJSON_ArrayForEach(row, memberOf(account, "commands"))
        printf("devmgr_command_rows_missed{command=\"%s\"} %d\n", labelText(accountText(row, "command")).c_str(),
               cJSON_IsTrue(cJSON_GetObjectItemCaseSensitive(row, "rowsMissed")) ? 1 : 0);
    return CTL_OK;
}
