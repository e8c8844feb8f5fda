#include "loader.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <cstdio>
#include <cstdlib>

// The kinds of values that a scenario's fields have, and how each is refused.

bool vsRefuse(VS_READ_T &read, const VS_NODE_T &node, const std::string &expected)
{
    if (!read.error.empty())
        return false;
    read.error = read.file + ":" + std::to_string(node.line) + ": " + node.key + ": " + expected;
    for (char &c : read.error) {
        if (static_cast<unsigned char>(c) < ' ')
            c = ' '; // a key or a path from the file must not end the one line
    }
    return false;
}

bool vsOnce(VS_READ_T &read, const VS_NODE_T &node, const std::string &what)
{
    return read.seen.insert(what).second || vsRefuse(read, node, "expected " + what + " once, given twice");
}

bool vsNumber(VS_READ_T &read, const VS_NODE_T &node, int64_t least, int64_t most, int64_t &value)
{
    if (node.kind != VS_NODE_INTEGER || node.integer < least || node.integer > most)
        return vsRefuse(read, node, "expected a number from " + std::to_string(least) + " to " + std::to_string(most));
    value = node.integer;
    return true;
}

bool vsText(VS_READ_T &read, const VS_NODE_T &node, std::string &text)
{
    if (node.kind != VS_NODE_TEXT)
        return vsRefuse(read, node, "expected a text");
    text = node.text;
    return true;
}

static bool addressOf(const std::string &text, uint32_t &address)
{
    in_addr bytes{};
    if (inet_pton(AF_INET, text.c_str(), &bytes) != 1)
        return false;
    address = ntohl(bytes.s_addr);
    return true;
}

bool vsAddress(VS_READ_T &read, const VS_NODE_T &node, uint32_t &address)
{
    if (node.kind != VS_NODE_TEXT || !addressOf(node.text, address))
        return vsRefuse(read, node, "expected an IPv4 address like \"10.0.0.1\"");
    return true;
}

static bool macOf(const std::string &text)
{
    if (text.size() != 17)
        return false;
    for (size_t i = 0; i < text.size(); i++)
        if (i % 3 == 2 ? text[i] != ':' : !isxdigit(static_cast<unsigned char>(text[i])))
            return false;
    return true;
}

bool vsMac(VS_READ_T &read, const VS_NODE_T &node, std::string &mac)
{
    if (node.kind != VS_NODE_TEXT || !macOf(node.text))
        return vsRefuse(read, node, "expected a MAC address like \"00:10:7F:01:02:03\"");
    mac = node.text;
    for (char &c : mac)
        c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    return true;
}

// One piece of a port list: "1/0/5" or "1/0/5-8".
static bool pieceOf(const VS_STATE_T &state, const std::string &piece, std::vector<uint32_t> &ifNums)
{
    unsigned unit, slot, first, last;
    int used = 0;
    if (sscanf(piece.c_str(), "%5u/%5u/%5u-%5u%n", &unit, &slot, &first, &last, &used) != 4 || !used) {
        if (sscanf(piece.c_str(), "%5u/%5u/%5u%n", &unit, &slot, &first, &used) != 3)
            return false;
        last = first;
    }
    if (static_cast<size_t>(used) != piece.size() || last < first)
        return false;
    for (uint32_t number = first; number <= last; number++) {
        const VS_PORT_T *port = vsPortAt(state, unit, slot, number);
        if (port == nullptr)
            return false;
        ifNums.push_back(port->ifNum);
    }
    return true;
}

bool vsPortList(VS_READ_T &read, const VS_NODE_T &node, const std::string &text, std::vector<uint32_t> &ifNums)
{
    size_t begin = 0;
    while (begin <= text.size()) {
        size_t end = std::min(text.find(',', begin), text.size());
        std::string piece = text.substr(begin, end - begin);
        if (!pieceOf(read.out.state, piece, ifNums))
            return vsRefuse(read, node,
                            "expected ports that exist like \"1/0/1\" or \"1/0/1-24,1/0/30\", not \"" + piece + "\"");
        begin = end + 1;
    }
    std::vector<uint32_t> sorted = ifNums;
    std::sort(sorted.begin(), sorted.end());
    if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end())
        return vsRefuse(read, node, "expected each port once, given twice");
    return true;
}

static bool lagOf(const VS_STATE_T &state, const std::string &text, uint32_t &ifNum)
{
    for (const VS_LAG_T &lag : state.lags)
        if (text == vsLagName(lag)) {
            ifNum = lag.ifNum;
            return true;
        }
    return false;
}

bool vsInterfaceOf(VS_READ_T &read, const VS_NODE_T &node, uint32_t &ifNum)
{
    std::vector<uint32_t> ifNums;
    if (node.kind == VS_NODE_TEXT && lagOf(read.out.state, node.text, ifNum))
        return true;
    if (node.kind != VS_NODE_TEXT || !pieceOf(read.out.state, node.text, ifNums) || ifNums.size() != 1)
        return vsRefuse(read, node, "expected a port or LAG that exists like \"1/0/5\" or \"lag 2\"");
    ifNum = ifNums[0];
    return true;
}

bool vsInterfaceList(VS_READ_T &read, const VS_NODE_T &node, std::vector<uint32_t> &ifNums)
{
    if (node.kind != VS_NODE_ARRAY)
        return vsRefuse(read, node, "expected a list of interfaces");
    ifNums.clear();
    for (const VS_NODE_T &item : node.items) {
        uint32_t ifNum;
        if (!vsInterfaceOf(read, item, ifNum))
            return false;
        ifNums.push_back(ifNum);
    }
    return true;
}

bool vsVlanOf(VS_READ_T &read, const VS_NODE_T &node, uint32_t &id)
{
    if (node.kind != VS_NODE_INTEGER || node.integer < 1 || node.integer > 4094 ||
        vsVlan(read.out.state, static_cast<uint32_t>(node.integer)) == nullptr)
        return vsRefuse(read, node, "expected the ID of a VLAN that exists");
    id = static_cast<uint32_t>(node.integer);
    return true;
}

static const VS_FIELD_T<VS_WINDOW_T> WINDOW_FIELDS[] = {
    {"from", number<&VS_WINDOW_T::from, 0, UINT32_MAX>},
    {"lasts", number<&VS_WINDOW_T::lasts, 0, UINT32_MAX>},
    {"every", number<&VS_WINDOW_T::every, 0, UINT32_MAX>},
};

bool vsWindow(VS_READ_T &read, const VS_NODE_T &node, VS_WINDOW_T &window)
{
    window = VS_WINDOW_T();
    if (!readObject(read, node, window, WINDOW_FIELDS))
        return false;
    if (window.every > 0 && (window.lasts == 0 || window.every < window.lasts))
        return vsRefuse(read, node, "expected \"lasts\" of at least 1 and \"every\" not below it");
    return true;
}

bool vsTime(VS_READ_T &read, const VS_NODE_T &node, VS_DATE_T &date, uint32_t &second)
{
    int used = 0, whole = 0;
    second = 0;
    int fields = node.kind != VS_NODE_TEXT
                     ? 0
                     : sscanf(node.text.c_str(), "%4u-%2u-%2u %2u:%2u%n:%2u%n", &date.year, &date.month, &date.day,
                              &date.hour, &date.minute, &used, &second, &whole);
    size_t length = static_cast<size_t>(fields == 6 ? whole : used);
    if (fields < 5 || length != node.text.size() || date.year < 1970 || date.month < 1 || date.month > 12 ||
        date.day < 1 || date.day > 31 || date.hour > 23 || date.minute > 59 || second > 59)
        return vsRefuse(read, node, "expected a time like \"2026-03-01 08:00\" or \"2026-03-01 08:00:30\"");
    return true;
}

bool vsKeyNumber(VS_READ_T &read, const VS_NODE_T &node, uint32_t least, uint32_t most, uint32_t &number)
{
    char *end = nullptr;
    unsigned long value = strtoul(node.key.c_str(), &end, 10);
    if (!isdigit(static_cast<unsigned char>(node.key[0])) || *end != '\0' || value < least || value > most)
        return vsRefuse(read, node,
                        "expected a number from " + std::to_string(least) + " to " + std::to_string(most) + " as key");
    number = static_cast<uint32_t>(value);
    return true;
}

bool vsWord(VS_READ_T &read, const VS_NODE_T &node, const VS_WORD_T *words, size_t count, uint32_t &code)
{
    if (node.kind == VS_NODE_INTEGER && node.integer >= 0 && node.integer <= 255) {
        code = static_cast<uint32_t>(node.integer);
        return true;
    }
    std::string known;
    for (size_t i = 0; i < count; i++) {
        if (node.kind == VS_NODE_TEXT && node.text == words[i].word) {
            code = words[i].code;
            return true;
        }
        known += std::string(i > 0 ? ", " : "") + "\"" + words[i].word + "\"";
    }
    return vsRefuse(read, node, "expected " + known + " or a code from 0 to 255");
}

bool vsTextList(VS_READ_T &read, const VS_NODE_T &node, std::vector<std::string> &texts)
{
    if (node.kind != VS_NODE_ARRAY)
        return vsRefuse(read, node, "expected a list of texts");
    texts.clear();
    for (const VS_NODE_T &item : node.items) {
        std::string text;
        if (!vsText(read, item, text))
            return false;
        texts.push_back(text);
    }
    return true;
}

const VS_NODE_T *vsMember(const VS_NODE_T &node, const char *key)
{
    for (const VS_NODE_T &item : node.items)
        if (item.key == key)
            return &item;
    return nullptr;
}

bool vsRequire(VS_READ_T &read, const VS_NODE_T &node, std::initializer_list<const char *> keys)
{
    for (const char *key : keys)
        if (vsMember(node, key) == nullptr)
            return vsRefuse(read, node, std::string("expected \"") + key + "\" in it");
    return true;
}
