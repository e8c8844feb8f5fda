#include "fault_golden.h"

#include "cache/json_difference.h"
#include "faults.h"
#include "runtime/log.h"
#include "runtime/paths.h"

#include <algorithm>
#include <sstream>

using LINES_T = std::vector<std::string>;

// Lines of a log by their text without numbers: the first of each kind, how many there are, and the kinds in the order
// of their first.
struct LOG_T {
    std::map<std::string, std::string> first;
    std::map<std::string, unsigned> count;
    LINES_T order;
};

// Cases that say the same to the log, a line for each subject; and all that do the same to the document.
struct SAID_T {
    LINES_T log;
    LINES_T cases;
};
struct OUTCOME_T {
    LINES_T document;
    std::vector<SAID_T> said;
};

static std::string likeness(const CASE_T &one)
{
    for (PATH_ID folder : {PATH_TEMPLATE_DIR, PATH_EXPORT_DIR}) {
        if (one.file.rfind(PathGet(folder), 0) == 0)
            return PathGet(folder);
    }
    return one.file.empty() ? withoutNumbers(one.subject) : one.file;
}

// Of commands that differ in numbers only, and of files that are all of a kind, the first and the last.
static std::vector<CASE_T> casesOf(const DOCUMENT_T &document)
{
    std::vector<CASE_T> all = platformCases(document, false, true);
    std::map<std::string, std::pair<std::string, std::string>> ends; // subjects by likeness
    std::vector<CASE_T> cases;

    for (const CASE_T &one : fileCases(rootFiles()))
        all.push_back(one);
    for (const CASE_T &one : all) {
        auto [place, isNew] = ends.insert({likeness(one), {one.subject, one.subject}});
        place->second.second = one.subject;
    }
    for (const CASE_T &one : all) {
        const auto &[first, last] = ends[likeness(one)];
        if (one.subject == first || one.subject == last)
            cases.push_back(one);
    }
    return cases;
}

// Where the next header begins in a line, whose message has no line end then; the line's size for none.
static size_t stampAfter(const std::string &line)
{
    static constexpr size_t STAMP_SIZE = 23; // "2026-03-01 08:10:00.000"

    for (size_t at = line.find(" (", STAMP_SIZE + 1); at != std::string::npos; at = line.find(" (", at + 1)) {
        if (withoutNumbers(line.substr(at - STAMP_SIZE, STAMP_SIZE)) == "#-#-# #:#:#.#")
            return at - STAMP_SIZE;
    }
    return line.size();
}

// "2026-03-01 08:10:00.000 (ERROR): devmgr: [name:123] text" as "ERROR [name] text", without the root and the random
// number at the end of a temporary file's path.
static std::string logLine(const std::string &raw)
{
    std::string line = raw;
    size_t level = line.find(" (");
    size_t levelEnd = line.find("): ");

    if (level != std::string::npos && levelEnd != std::string::npos) {
        size_t text = line.find(": ", levelEnd + 3);
        line = line.substr(level + 2, levelEnd - level - 2) + " " + line.substr(text + 2);
    }
    size_t number = line.find(':');
    size_t numberEnd = line.find(']');
    if (number < numberEnd && numberEnd != std::string::npos)
        line.erase(number, numberEnd - number);
    for (size_t at; (at = line.find(rootName())) != std::string::npos;)
        line.erase(at, rootName().size());
    line.erase(line.find_last_not_of(" \r") + 1);
    size_t digits = line.find_last_not_of("0123456789") + 1;
    if (line.find('/') != std::string::npos && line.size() - digits > 6)
        line.replace(digits, std::string::npos, "#");
    return line;
}

// What was logged since the last time.
static LOG_T logTake()
{
    std::istringstream raw(textRead(PathGet(PATH_LOG)));
    std::string line;
    LOG_T log;

    textWrite(PathGet(PATH_LOG), "");
    while (std::getline(raw, line)) {
        for (size_t next; !line.empty(); line.erase(0, next)) {
            next = stampAfter(line);
            const std::string text = logLine(line.substr(0, next));
            const std::string kind = withoutNumbers(text);
            if (log.count[kind]++ == 0) {
                log.first[kind] = text;
                log.order.push_back(kind);
            }
        }
    }
    return log;
}

// What the document logs when nothing fails, and the records that it writes then.
static LOG_T cleanRun(const DOCUMENT_T &document, std::vector<std::string> *own)
{
    recordsWrite({});
    coldBegin();
    (void)logTake();
    documentRun(document);
    for (const auto &[name, text] : recordsRead())
        own->push_back(name);
    return logTake();
}

// Lines about another record than the document's begin with its name.
static LINES_T recordsDifference(const std::string &document, const RECORDS_T &was, const RECORDS_T &now)
{
    LINES_T lines;

    for (const auto &[name, text] : now) {
        auto before = was.find(name);
        if (before == was.end()) {
            lines.push_back(name + " is new");
            continue;
        }
        for (const std::string &line : jsonDifference(before->second, text))
            lines.push_back((name == document ? "" : name + ": ") + line);
    }
    for (const auto &[name, text] : was) {
        if (now.count(name) == 0)
            lines.push_back(name + " is not stored");
    }
    return lines;
}

// Debug lines are told only when there is no such line without the fault.
static LINES_T logDifference(const LOG_T &was, const LOG_T &now)
{
    LINES_T lines;
    auto told = [](const std::string &kind) {
        return kind.rfind("DEBUG", 0) != 0;
    };

    for (const std::string &kind : now.order) {
        unsigned count = now.count.at(kind);
        auto before = was.first.find(kind);
        bool known = before != was.first.end();
        if (known && (!told(kind) || (before->second == now.first.at(kind) && was.count.at(kind) == count)))
            continue;
        std::string line = now.first.at(kind) + (count > 1 ? " (" + std::to_string(count) + " such)" : "");
        lines.push_back(line +
                        (known ? " instead of " + std::to_string(was.count.at(kind)) + " " + before->second : ""));
    }
    for (const std::string &kind : was.order) {
        if (now.count.count(kind) == 0 && told(kind))
            lines.push_back("not logged: " + was.first.at(kind));
    }
    return lines;
}

static void caseAdd(const CASE_T &one, const LINES_T &logged, OUTCOME_T *outcome)
{
    std::string subject = one.file.empty() ? one.subject : one.subject.substr(rootName().size());
    auto same = std::find_if(outcome->said.begin(), outcome->said.end(),
                             [&](const SAID_T &said) { return said.log == logged; });

    if (same == outcome->said.end())
        same = outcome->said.insert(same, {logged, {}});
    if (!same->cases.empty() && same->cases.back().rfind(subject + " ", 0) == 0)
        same->cases.back() += ", " + one.mode;
    else
        same->cases.push_back(subject + " " + one.mode);
}

static OUTCOME_T *outcomeOf(const LINES_T &document, std::vector<OUTCOME_T> *outcomes)
{
    for (OUTCOME_T &outcome : *outcomes) {
        if (outcome.document == document)
            return &outcome;
    }
    outcomes->push_back({document, {}});
    return &outcomes->back();
}

static std::string outcomeText(const OUTCOME_T &outcome)
{
    std::string text;

    if (outcome.said.empty())
        return "";
    for (const std::string &line : outcome.document)
        text += line + "\n";
    for (const SAID_T &said : outcome.said) {
        for (const std::string &one : said.cases)
            text += "  when " + one + "\n";
        for (const std::string &line : said.log)
            text += "      " + line + "\n";
    }
    return text;
}

static std::string documentText(const DOCUMENT_T &document, const RECORDS_T &clean)
{
    std::vector<CASE_T> cases = casesOf(document);
    std::vector<OUTCOME_T> outcomes;
    OUTCOME_T none = {{"no difference"}, {}};
    std::vector<std::string> own; // deleted before each run: what is not stored then shall not be the old record
    LOG_T cleanLog = cleanRun(document, &own);

    RECORDS_T begin = clean;
    for (const std::string &name : own)
        begin.erase(name);
    recordsWrite(begin);
    for (const CASE_T &one : cases) {
        coldBegin();
        (void)logTake();
        caseRun(one, document);
        LINES_T changed = recordsDifference(document.name, clean, recordsRead());
        LINES_T logged = logDifference(cleanLog, logTake());
        if (!changed.empty())
            caseAdd(one, logged, outcomeOf(changed, &outcomes));
        else if (!logged.empty() || one.file.empty())
            caseAdd(one, logged, &none);
        recordsDelete(own);
        if (recordsRead() != begin)
            recordsWrite(begin);
    }
    recordsWrite(clean);
    std::string text;
    if (!cleanLog.order.empty())
        text = outcomeText({{"no fault"}, {{logDifference({}, cleanLog), {}}}});
    outcomes.push_back(none);
    for (const OUTCOME_T &outcome : outcomes)
        text += outcomeText(outcome);
    return text;
}

RECORDS_T faultTexts(const NAMES_T &only)
{
    RECORDS_T clean = recordsRead();
    RECORDS_T texts;

    textWrite(PathGet(PATH_LOG_LEVEL), std::to_string(LOG_LEVEL_DEBUG));
    for (const DOCUMENT_T &document : documentsListed()) {
        if (only.empty() || only.count(document.name) != 0)
            texts[document.name] = documentText(document, clean);
    }
    return texts;
}
