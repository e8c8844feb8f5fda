#include "fault_golden.h"

#include "cache/json_difference.h"
#include "differences.h"
#include "faults.h"
#include "runtime/log.h"
#include "runtime/paths.h"

#include <algorithm>

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
