#include "loader.h"

#include <call_table.h>
#include <fstream>
#include <sstream>

// How a scenario's switch misbehaves: faults, latency, and literal outputs of show commands. A name that no client call
// has is refused, and so is a command that nothing answers; a literal output can be that of any command.

static bool callName(VS_READ_T &read, const VS_NODE_T &node, std::string &name)
{
    if (!vsText(read, node, name) || name == "*")
        return read.error.empty();
    for (const OPENCLT_CALL_T &known : opencltCalls)
        if (opencltPlainName(known.name) == opencltPlainName(name)) {
            name = opencltPlainName(name);
            return true;
        }
    return vsRefuse(read, node, "expected the name of a client call, or \"*\"");
}

// The literal outputs have been read by now.
static bool commandName(VS_READ_T &read, const VS_NODE_T &node, std::string &name)
{
    return vsText(read, node, name) &&
           (read.out.texts.count(name) > 0 || vsShowRendered(name) ||
            vsRefuse(read, node, "expected a show command that is rendered, or stands in \"texts\""));
}

static bool eitherName(VS_READ_T &read, const VS_NODE_T &node)
{
    bool call = vsMember(node, "call") != nullptr, command = vsMember(node, "command") != nullptr;
    return call != command || vsRefuse(read, node, "expected either \"call\" or \"command\" in it");
}

static bool faultKind(VS_READ_T &read, const VS_NODE_T &node, VS_FAULT_T &fault)
{
    static const VS_WORD_T KINDS[] = {{"fail", VS_FAIL},      {"noFile", VS_NO_FILE},   {"empty", VS_EMPTY},
                                      {"cut", VS_CUT},        {"cutPart", VS_CUT_PART}, {"crlf", VS_CRLF},
                                      {"garbage", VS_GARBAGE}};
    uint32_t kind = VS_FAIL;
    if (node.kind == VS_NODE_INTEGER)
        return vsRefuse(read, node, "expected a text");
    if (!vsWord(read, node, KINDS, std::size(KINDS), kind))
        return false;
    fault.kind = static_cast<VS_FAULT_KIND>(kind);
    return true;
}

static bool numberOrText(VS_READ_T &read, const VS_NODE_T &node, std::string &text)
{
    if (node.kind != VS_NODE_INTEGER)
        return vsText(read, node, text);
    text = std::to_string(node.integer);
    return true;
}

// A list has a part for each output of the call.
static bool faultValue(VS_READ_T &read, const VS_NODE_T &node, VS_FAULT_T &fault)
{
    fault.kind = VS_ANSWER;
    if (node.kind != VS_NODE_ARRAY)
        return numberOrText(read, node, fault.value);
    for (const VS_NODE_T &item : node.items) {
        std::string part;
        if (!numberOrText(read, item, part))
            return false;
        fault.value += (&item == &node.items.front() ? "" : std::string(1, '\0')) + part;
    }
    return true;
}

static bool faultResult(VS_READ_T &read, const VS_NODE_T &node, VS_FAULT_T &fault)
{
    if (node.kind != VS_NODE_INTEGER || node.integer == 0 || node.integer < -9999 || node.integer > 9999)
        return vsRefuse(read, node, "expected a result code from -9999 to 9999 other than 0");
    fault.result = static_cast<int>(node.integer);
    return true;
}

static const VS_FIELD_T<VS_FAULT_T> FAULT_FIELDS[] = {
    {"call", value<&VS_FAULT_T::name, callName>},
    {"command", value<&VS_FAULT_T::name, commandName>},
    {"key", value<&VS_FAULT_T::key, numberOrText>},
    {"nth", number<&VS_FAULT_T::nth, 0, UINT32_MAX>},
    {"do", faultKind},
    {"result", faultResult},
    {"value", faultValue},
    {"bytes", number<&VS_FAULT_T::bytes, 0, UINT32_MAX>},
    {"from", number<&VS_FAULT_T::from, 0, UINT32_MAX>},
    {"until", number<&VS_FAULT_T::until, 0, UINT32_MAX>},
};

bool vsReadFaults(VS_READ_T &read, const VS_NODE_T &node)
{
    if (!readList(read, node, read.out.faults, FAULT_FIELDS))
        return false;
    for (size_t i = 0; i < node.items.size(); i++) {
        const VS_NODE_T *kind = vsMember(node.items[i], "do");
        if (!eitherName(read, node.items[i]))
            return false;
        const VS_NODE_T *answer = vsMember(node.items[i], "value");
        bool isCall = vsMember(node.items[i], "call") != nullptr;
        if (answer != nullptr && (!isCall || kind != nullptr || vsMember(node.items[i], "result") != nullptr))
            return vsRefuse(read, *answer, "expected a \"call\" beside it, and neither \"do\" nor \"result\"");
        if (isCall && kind != nullptr && read.out.faults[i].kind != VS_FAIL)
            return vsRefuse(read, *kind, "expected \"fail\" for a call");
    }
    return true;
}

namespace {
struct LATENCY_T {
    std::string name;
    uint32_t microseconds = 0;
};
} // namespace

static const VS_FIELD_T<LATENCY_T> LATENCY_FIELDS[] = {
    {"call", value<&LATENCY_T::name, callName>},
    {"command", value<&LATENCY_T::name, commandName>},
    {"microseconds", number<&LATENCY_T::microseconds, 0, 60'000'000>},
};

bool vsReadLatency(VS_READ_T &read, const VS_NODE_T &node)
{
    std::vector<LATENCY_T> rows;
    if (!readList(read, node, rows, LATENCY_FIELDS))
        return false;
    for (size_t i = 0; i < rows.size(); i++) {
        const VS_NODE_T &item = node.items[i];
        if (!eitherName(read, item) || !vsRequire(read, item, {"microseconds"}) ||
            !vsOnce(read, item, "the latency of \"" + rows[i].name + "\""))
            return false;
        read.out.latency[rows[i].name] = rows[i].microseconds;
    }
    return true;
}

static bool textFile(VS_READ_T &read, const VS_NODE_T &node, std::string &text)
{
    std::string path;
    if (!vsText(read, node, path))
        return false;
    if (path.empty() || path[0] != '/')
        path = read.directory + path;
    read.out.files.push_back(path);
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    if (file.peek() != std::ifstream::traits_type::eof())
        content << file.rdbuf();
    if (!file.is_open() || file.bad())
        return vsRefuse(read, node, "expected a file that can be read, not \"" + path + "\"");
    text = content.str();
    return true;
}

namespace {
struct TEXT_T {
    std::string text;
};
} // namespace

static const VS_FIELD_T<TEXT_T> TEXT_FIELDS[] = {{"file", value<&TEXT_T::text, textFile>}};

static bool literal(VS_READ_T &read, const VS_NODE_T &node, std::string &text)
{
    if (node.kind == VS_NODE_TEXT)
        return vsText(read, node, text);
    if (node.kind == VS_NODE_OBJECT) {
        TEXT_T row;
        if (!vsRequire(read, node, {"file"}) || !readObject(read, node, row, TEXT_FIELDS))
            return false;
        text = row.text;
        return true;
    }
    std::vector<std::string> lines;
    if (node.kind != VS_NODE_ARRAY)
        return vsRefuse(read, node, "expected a text, a list of lines, or {\"file\": name}");
    if (!vsTextList(read, node, lines))
        return false;
    for (const std::string &line : lines)
        text += line + "\n";
    return true;
}

bool vsReadTexts(VS_READ_T &read, const VS_NODE_T &node)
{
    if (node.kind != VS_NODE_OBJECT)
        return vsRefuse(read, node, "expected an object");
    for (const VS_NODE_T &item : node.items)
        if (!literal(read, item, read.out.texts[item.key]))
            return false;
    return true;
}
