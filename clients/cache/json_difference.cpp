#include "cache/json_difference.h"

// Both trees are walked side by side to a list of changes, each at a path of keys and indices. Then changes that agree
// in all but one index, and in what they change to, become one, from the innermost index to the outermost.

#include "runtime/owned.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

// Folded, a path may hold "[0-3,7]", and `was` and `now` several values without repetition.
using CHANGES_T = std::vector<JSON_CHANGE_T>;
using PATH_T = std::vector<std::string>;
using NODES_T = std::vector<const cJSON *>;

static constexpr size_t VALUES = 4;           // shown of folded changes
static constexpr size_t PAIRED_MAX = 1000000; // elements times elements; longer lists are compared by index
static constexpr size_t VALUE_SIZE = 160;     // of a value that is shown

static void nodesCompare(const cJSON *was, const cJSON *now, const PATH_T &path, CHANGES_T *changes);
static void objectsCompare(const cJSON *was, const cJSON *now, const PATH_T &path, CHANGES_T *changes);
static void listsCompare(const cJSON *was, const cJSON *now, const PATH_T &path, CHANGES_T *changes);
static std::vector<std::pair<int, int>> elementsPair(const NODES_T &was, const NODES_T &now);
static size_t distance(const cJSON *was, const cJSON *now);
static size_t alone(const cJSON *node);
static const cJSON *identity(const cJSON *node);
static size_t leaves(const cJSON *node);
static void changeAdd(const cJSON *was, const std::string &now, const PATH_T &path, CHANGES_T *changes);
static PATH_T below(const PATH_T &path, const std::string &part);
static std::string valueText(const cJSON *node);
static CHANGES_T folded(const CHANGES_T &changes, size_t depth);
static std::string nowKind(const std::string &now);
static void valuesMerge(const std::vector<std::string> &more, std::vector<std::string> *values);
static std::string indexText(const std::string &part);
static std::string changeText(const JSON_CHANGE_T &change);
static std::string valuesText(const std::vector<std::string> &values);

std::vector<std::string> jsonDifference(const std::string &was, const std::string &now)
{
    OWNED_JSON wasTree(cJSON_Parse(was.c_str()));
    OWNED_JSON nowTree(cJSON_Parse(now.c_str()));
    std::vector<std::string> lines;
    CHANGES_T changes;
    size_t depth = 0;

    if (was == now)
        return {};
    if (wasTree == nullptr || nowTree == nullptr)
        return {"no JSON: " + (nowTree == nullptr ? now : was).substr(0, VALUE_SIZE)};
    nodesCompare(wasTree.get(), nowTree.get(), {}, &changes);
    for (const JSON_CHANGE_T &change : changes)
        depth = std::max(depth, change.path.size());
    while (depth-- > 0)
        changes = folded(changes, depth);
    for (const JSON_CHANGE_T &change : changes)
        lines.push_back(changeText(change));
    if (lines.empty())
        lines.push_back("the same values as another text");
    return lines;
}

std::vector<JSON_CHANGE_T> jsonChanges(const std::string &was, const std::string &now)
{
    OWNED_JSON wasTree(cJSON_Parse(was.c_str()));
    OWNED_JSON nowTree(cJSON_Parse(now.c_str()));
    CHANGES_T changes;

    if (wasTree != nullptr && nowTree != nullptr)
        nodesCompare(wasTree.get(), nowTree.get(), {}, &changes);
    return changes;
}

std::string jsonPointer(const std::vector<std::string> &path, size_t first)
{
    std::string pointer;

    for (size_t i = first; i < path.size(); i++) {
        pointer += '/';
        if (path[i].front() == '[') {
            pointer += path[i].substr(1, path[i].size() - 2);
            continue;
        }
        for (char character : path[i])
            pointer += character == '~' ? "~0" : character == '/' ? "~1" : std::string(1, character);
    }
    return pointer;
}

// One part of a pointer: "~1" is a slash, "~0" a tilde.
static std::string partPlain(const std::string &part)
{
    std::string plain;

    for (size_t i = 0; i < part.size(); i++) {
        bool escaped = part[i] == '~' && i + 1 < part.size() && (part[i + 1] == '0' || part[i + 1] == '1');
        plain += !escaped ? part[i] : part[++i] == '0' ? '~' : '/';
    }
    return plain;
}

const cJSON *jsonPointed(const cJSON *tree, const std::string &pointer)
{
    size_t at = 0;

    while (tree != nullptr && at < pointer.size()) {
        size_t end = std::min(pointer.find('/', at + 1), pointer.size());
        std::string part = partPlain(pointer.substr(at + 1, end - at - 1));
        bool index = !part.empty() && part.size() < 10 && part.find_first_not_of("0123456789") == std::string::npos;
        if (pointer[at] != '/')
            return nullptr;
        if (cJSON_IsArray(tree))
            tree = index ? cJSON_GetArrayItem(tree, std::stoi(part)) : nullptr;
        else
            tree = cJSON_GetObjectItemCaseSensitive(tree, part.c_str());
        at = end;
    }
    return tree;
}

static void nodesCompare(const cJSON *was, const cJSON *now, const PATH_T &path, CHANGES_T *changes)
{
    if (cJSON_IsObject(was) && cJSON_IsObject(now))
        objectsCompare(was, now, path, changes);
    else if (cJSON_IsArray(was) && cJSON_IsArray(now))
        listsCompare(was, now, path, changes);
    else if (valueText(was) != valueText(now))
        changeAdd(was, valueText(now), path, changes);
}

// Keys that stand twice are paired by their order.
static void objectsCompare(const cJSON *was, const cJSON *now, const PATH_T &path, CHANGES_T *changes)
{
    NODES_T rest;

    for (const cJSON *child = now->child; child != nullptr; child = child->next)
        rest.push_back(child);
    for (const cJSON *child = was->child; child != nullptr; child = child->next) {
        auto other = std::find_if(rest.begin(), rest.end(),
                                  [child](const cJSON *one) { return strcmp(one->string, child->string) == 0; });
        if (other == rest.end()) {
            changeAdd(child, "gone", below(path, child->string), changes);
            continue;
        }
        nodesCompare(child, *other, below(path, child->string), changes);
        rest.erase(other);
    }
    for (const cJSON *child : rest)
        changeAdd(nullptr, "new: " + valueText(child), below(path, child->string), changes);
}

static void listsCompare(const cJSON *was, const cJSON *now, const PATH_T &path, CHANGES_T *changes)
{
    NODES_T wasNodes;
    NODES_T nowNodes;

    for (const cJSON *child = was->child; child != nullptr; child = child->next)
        wasNodes.push_back(child);
    for (const cJSON *child = now->child; child != nullptr; child = child->next)
        nowNodes.push_back(child);
    for (auto [i, j] : elementsPair(wasNodes, nowNodes)) {
        PATH_T place = below(path, "[" + std::to_string(j >= 0 ? j : i) + "]");
        if (i >= 0 && j >= 0)
            nodesCompare(wasNodes[i], nowNodes[j], place, changes);
        else if (i >= 0)
            changeAdd(cJSON_IsObject(wasNodes[i]) ? nullptr : wasNodes[i], "gone", place, changes);
        else
            changeAdd(nullptr, "new: " + valueText(nowNodes[j]), place, changes);
    }
}

// Indices of elements that belong together, -1 for none, in order. In lists of different lengths that is the cheapest
// way from one to the other, where an element that goes or comes costs a little more than half of its values.
static std::vector<std::pair<int, int>> elementsPair(const NODES_T &was, const NODES_T &now)
{
    std::vector<std::pair<int, int>> pairs;
    size_t i = 0;
    size_t j = 0;

    if (was.size() == now.size() || was.size() * now.size() > PAIRED_MAX) {
        for (; i < std::max(was.size(), now.size()); i++)
            pairs.emplace_back(i < was.size() ? i : -1, i < now.size() ? i : -1);
        return pairs;
    }
    std::vector<std::vector<size_t>> cost(was.size() + 1, std::vector<size_t>(now.size() + 1, 0));
    for (i = was.size() + 1; i-- > 0;) { // of the way from these elements to the ends
        for (j = now.size() + 1; j-- > 0;) {
            size_t gone = i < was.size() ? cost[i + 1][j] + alone(was[i]) : SIZE_MAX;
            size_t come = j < now.size() ? cost[i][j + 1] + alone(now[j]) : SIZE_MAX;
            size_t both = i < was.size() && j < now.size() ? cost[i + 1][j + 1] + distance(was[i], now[j]) : SIZE_MAX;
            if (i < was.size() || j < now.size())
                cost[i][j] = std::min({gone, come, both});
        }
    }
    for (i = j = 0; i < was.size() || j < now.size();) {
        if (i < was.size() && cost[i][j] == cost[i + 1][j] + alone(was[i]))
            pairs.emplace_back(i++, -1);
        else if (j < now.size() && cost[i][j] == cost[i][j + 1] + alone(now[j]))
            pairs.emplace_back(-1, j++);
        else
            pairs.emplace_back(i++, j++);
    }
    return pairs;
}

// What an element costs that has no partner; one of two that differ in all values is still cheaper.
static size_t alone(const cJSON *node)
{
    return leaves(node) * 6 + 1;
}

// Ten for each value that differs; more than both cost alone for objects that are about different things.
static size_t distance(const cJSON *was, const cJSON *now)
{
    const cJSON *one = was->child;
    const cJSON *other = now->child;
    size_t sum = 0;

    if (cJSON_Compare(identity(was), identity(now), 1) == 0 && identity(was) != nullptr && identity(now) != nullptr)
        return alone(was) + alone(now) + 1;
    if (one == nullptr || other == nullptr)
        return cJSON_Compare(was, now, 1) != 0 ? 0 : 10 * std::max(leaves(was), leaves(now));
    for (; one != nullptr && other != nullptr; one = one->next, other = other->next)
        sum += distance(one, other);
    for (; one != nullptr; one = one->next)
        sum += 10 * leaves(one);
    for (; other != nullptr; other = other->next)
        sum += 10 * leaves(other);
    return sum;
}

// What an object is about: the first of these members that it has, null for none.
static const cJSON *identity(const cJSON *node)
{
    for (const char *key : {"portNum", "vlanId", "id", "name"}) {
        const cJSON *member = cJSON_GetObjectItem(node, key);
        if (member != nullptr)
            return member;
    }
    return nullptr;
}

static size_t leaves(const cJSON *node)
{
    size_t sum = node->child == nullptr ? 1 : 0;

    for (const cJSON *child = node->child; child != nullptr; child = child->next)
        sum += leaves(child);
    return sum;
}

static void changeAdd(const cJSON *was, const std::string &now, const PATH_T &path, CHANGES_T *changes)
{
    changes->push_back({path, {}, {now}});
    if (was != nullptr)
        changes->back().was.push_back(valueText(was));
}

static PATH_T below(const PATH_T &path, const std::string &part)
{
    PATH_T longer = path;

    longer.push_back(part);
    return longer;
}

static std::string valueText(const cJSON *node)
{
    OWNED_TEXT printed(cJSON_PrintUnformatted(node));
    std::string text = printed == nullptr ? "" : printed.get();

    return text.size() <= VALUE_SIZE ? text : text.substr(0, VALUE_SIZE) + "...";
}

// Changes that agree in all but the index at this depth, as one, where the first of them stands. New texts agree that
// differ in numbers only ("if-1").
static CHANGES_T folded(const CHANGES_T &changes, size_t depth)
{
    std::map<std::pair<PATH_T, std::string>, size_t> places;
    CHANGES_T few;

    for (const JSON_CHANGE_T &change : changes) {
        std::pair<PATH_T, std::string> key(change.path, nowKind(change.now.front()));
        bool index = depth < change.path.size() && change.path[depth].front() == '[';
        if (index)
            key.first[depth] = "[";
        auto [place, isNew] = places.insert({key, few.size()});
        if (isNew || !index) {
            few.push_back(change);
            continue;
        }
        JSON_CHANGE_T &first = few[place->second];
        std::string &indices = first.path[depth];
        indices = indices.substr(0, indices.size() - 1) + "," + change.path[depth].substr(1);
        valuesMerge(change.was, &first.was);
        valuesMerge(change.now, &first.now);
    }
    return few;
}

static std::string nowKind(const std::string &now)
{
    static const char letters[] = "abcdefghijklmnopqrstuvwxyz";

    return now.front() == '"' && now.find_first_of(letters) != std::string::npos ? withoutNumbers(now) : now;
}

static void valuesMerge(const std::vector<std::string> &more, std::vector<std::string> *values)
{
    for (const std::string &value : more) {
        if (std::find(values->begin(), values->end(), value) == values->end())
            values->push_back(value);
    }
}

// "[0,1,2,5]" as "[0-2,5]".
static std::string indexText(const std::string &part)
{
    std::string text = "[";
    int first = -1;
    int last = -1;
    auto add = [&] {
        text += (text.size() > 1 ? "," : "") + std::to_string(first);
        text += last > first ? "-" + std::to_string(last) : "";
    };

    for (size_t at = 0; at != std::string::npos; at = part.find(',', at + 1)) {
        int index = atoi(part.c_str() + at + 1);
        if (last >= 0 && index != last + 1) {
            add();
            last = -1;
        }
        first = last < 0 ? index : first;
        last = index;
    }
    add();
    return text + "]";
}

static std::string changeText(const JSON_CHANGE_T &change)
{
    std::string text;

    for (size_t i = 0; i < change.path.size(); i++) {
        if (i == 0 && change.path[0] != "resp" && change.path.size() > 1)
            continue; // the payload's key
        if (change.path[i].front() == '[')
            text += indexText(change.path[i]);
        else
            text += (text.empty() ? "" : ".") + change.path[i];
    }
    if (change.now.front() == "gone")
        return text + " gone" + (change.was.empty() ? "" : ": " + valuesText(change.was));
    if (change.was.empty())
        return text + " " + valuesText(change.now);
    return text + ": " + valuesText(change.was) + " -> " + valuesText(change.now);
}

static std::string valuesText(const std::vector<std::string> &values)
{
    std::string text;

    for (size_t i = 0; i < values.size() && i <= VALUES; i++)
        text += (i == 0 ? "" : ", ") + (i < VALUES ? values[i] : "...");
    return text;
}

std::string withoutNumbers(const std::string &text)
{
    std::string without;

    for (char character : text) {
        if (strchr("0123456789", character) == nullptr)
            without += character;
        else if (without.empty() || without.back() != '#')
            without += '#';
    }
    return without;
}
