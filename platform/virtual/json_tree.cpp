#include "json_tree.h"

#include <cmath>
#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>
#include <set>

// Builds the tree from RapidJSON's events. The input stream counts lines as the reader takes characters, so each event
// knows the line it ends on. The parse is iterative and the depth limited: a hostile text costs no stack.

namespace {

constexpr size_t DEPTH_MAX = 16;

struct LINES_T {
    using Ch = char;
    const std::string &text;
    size_t at = 0;
    int line = 1;

    explicit LINES_T(const std::string &source) : text(source)
    {
    }
    char Peek() const
    {
        return at < text.size() ? text[at] : '\0';
    }
    char Take()
    {
        char c = Peek();
        if (at < text.size())
            at++;
        if (c == '\n')
            line++;
        return c;
    }
    size_t Tell() const
    {
        return at;
    }
    // Only parsing in place would write.
    char *PutBegin()
    {
        return nullptr;
    }
    void Put(char)
    {
    }
    void Flush()
    {
    }
    size_t PutEnd(char *)
    {
        return 0;
    }
};

struct BUILDER_T {
    const LINES_T &lines;
    VS_NODE_T &root;
    std::vector<VS_NODE_T *>
        open; // containers from the root down; only the last one grows, so the others stay in place
    std::string key;
    std::vector<std::set<std::string>> keys; // of each open object
    std::string refusal;                     // key and what was expected

    VS_NODE_T &add(VS_NODE_KIND kind)
    {
        VS_NODE_T *node = &root;
        if (!open.empty()) {
            VS_NODE_T &parent = *open.back();
            parent.items.emplace_back();
            node = &parent.items.back();
            bool element = parent.kind == VS_NODE_ARRAY;
            node->key = element ? parent.key + "[" + std::to_string(parent.items.size()) + "]" : key;
        }
        node->kind = kind;
        node->line = lines.line;
        return *node;
    }
    bool number(double real, bool whole, int64_t integer)
    {
        VS_NODE_T &node = add(whole ? VS_NODE_INTEGER : VS_NODE_REAL);
        node.real = real;
        node.integer = integer;
        return true;
    }
    bool start(VS_NODE_KIND kind)
    {
        if (open.size() >= DEPTH_MAX) {
            refusal = key + ": expected less nesting";
            return false;
        }
        open.push_back(&add(kind));
        keys.emplace_back();
        return true;
    }
    bool end()
    {
        open.pop_back();
        keys.pop_back();
        return true;
    }

    bool Null()
    {
        add(VS_NODE_NULL);
        return true;
    }
    bool Bool(bool value)
    {
        add(VS_NODE_FLAG).flag = value;
        return true;
    }
    bool Int(int value)
    {
        return number(value, true, value);
    }
    bool Uint(unsigned value)
    {
        return number(value, true, value);
    }
    bool Int64(int64_t value)
    {
        return number(static_cast<double>(value), true, value);
    }
    bool Uint64(uint64_t value)
    {
        bool fits = value <= static_cast<uint64_t>(INT64_MAX);
        return number(static_cast<double>(value), fits, fits ? static_cast<int64_t>(value) : 0);
    }
    bool Double(double value)
    {
        bool whole = std::fabs(value) < 9e15 && std::floor(value) == value;
        return number(value, whole, whole ? static_cast<int64_t>(value) : 0);
    }
    bool RawNumber(const char *, rapidjson::SizeType, bool)
    {
        return false; // only with a flag that is not set
    }
    bool String(const char *text, rapidjson::SizeType length, bool)
    {
        add(VS_NODE_TEXT).text.assign(text, length);
        return true;
    }
    bool StartObject()
    {
        return start(VS_NODE_OBJECT);
    }
    bool Key(const char *text, rapidjson::SizeType length, bool)
    {
        key.assign(text, length);
        if (keys.back().insert(key).second)
            return true;
        refusal = key + ": expected once, given twice";
        return false;
    }
    bool EndObject(rapidjson::SizeType)
    {
        return end();
    }
    bool StartArray()
    {
        return start(VS_NODE_ARRAY);
    }
    bool EndArray(rapidjson::SizeType)
    {
        return end();
    }
};

std::string plainSentence(std::string text)
{
    while (!text.empty() && (text.back() == '.' || text.back() == ' '))
        text.pop_back();
    return text;
}

} // namespace

std::string vsJsonParse(const std::string &json, const std::string &name, VS_NODE_T &root)
{
    LINES_T lines(json);
    BUILDER_T builder{lines, root};
    rapidjson::Reader reader;
    reader.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(lines, builder);
    std::string at = name + ":" + std::to_string(lines.line) + ": ";
    if (!builder.refusal.empty())
        return at + builder.refusal;
    if (reader.HasParseError())
        return at +
               "JSON: expected a JSON text: " + plainSentence(rapidjson::GetParseError_En(reader.GetParseErrorCode()));
    return "";
}
