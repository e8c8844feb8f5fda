#include "differences.h"

#include "cache/json_difference.h"
#include "faults.h"
#include "runtime/paths.h"

#include <sstream>

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

LOG_T logTake()
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

LINES_T recordsDifference(const std::string &document, const RECORDS_T &was, const RECORDS_T &now)
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

LINES_T logDifference(const LOG_T &was, const LOG_T &now)
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
