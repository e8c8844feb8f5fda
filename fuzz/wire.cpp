// fuzz_wire: what neighbours on the wire and people at the switch put into its tables, as client calls hand it out. The
// first line names a document and calls, "neighbor_ex: openapiIfTypeGet openapiFdbEntryNextGet". The rest is answers:
// number of the call in that line, use of it, length of the value in two bytes, value; again and again. A value has a
// part for each output of the call (control.h); none is a failure. Which document makes which calls is found by
// watching it.

#include "target.h"

#include <algorithm>
#include <call_table.h>
#include <control.h>
#include <iterator>
#include <sstream>

namespace {
constexpr size_t HEAD = 4; // bytes of an answer before its value

void callNote(void *context, const char *name, const char *, bool isCommand)
{
    auto *calls = static_cast<std::vector<std::string> *>(context);

    if (!isCommand && std::find(calls->begin(), calls->end(), name) == calls->end())
        calls->emplace_back(name);
}

std::vector<std::string> callsOf(const std::string &document)
{
    std::vector<std::string> calls;

    vsObserverSet(callNote, &calls);
    documentCheck(documentNamed(document));
    vsObserverSet(nullptr, nullptr);
    return calls;
}

struct VALUE_T {
    const char *number;
    std::string text;
};

// An answer whose outputs are of that value; walks go on.
std::string answer(const std::string &call, size_t number, unsigned use, const VALUE_T &value)
{
    std::string whole;

    for (const OPENCLT_CALL_T &row : opencltCalls) {
        for (const OPENCLT_ARGUMENT_T &argument : row.arguments) {
            if (opencltPlainName(row.name) != call || !opencltIsOutput(argument.kind))
                continue;
            bool isNumber = argument.kind == OPENCLT_OUT || argument.kind == OPENCLT_COUNT;
            whole += argument.kind == OPENCLT_CURSOR ? std::to_string(use + 1) : isNumber ? value.number : value.text;
            whole += '\0';
        }
    }
    return std::string{static_cast<char>(number), static_cast<char>(use), static_cast<char>(whole.size()),
                       static_cast<char>(whole.size() >> 8)} +
           whole;
}

// The rooms that calls.def names are those that documents offer.
void roomsCheck()
{
    for (const OPENCLT_CALL_T &row : opencltCalls) {
        for (const OPENCLT_ARGUMENT_T &argument : row.arguments) {
            uint32_t room = argument.room == nullptr ? 0 : strtoul(argument.room, nullptr, 10);
            if (room == 0 || room == vsRoomOffered(row.name))
                continue;
            fprintf(stderr, "%s: %u bytes are offered, %u stand in calls.def\n", row.name, vsRoomOffered(row.name),
                    room);
            abort();
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    targetBegin();
    INPUT_T input = inputSplit(data, size);
    std::istringstream head{std::string(input.head)};
    std::vector<std::string> words{std::istream_iterator<std::string>(head), {}};
    std::string_view rest = input.rest;
    auto byte = [&rest](size_t at) {
        return static_cast<unsigned char>(rest[at]);
    };

    while (rest.size() >= HEAD && words.size() > 1) {
        VS_FAULT_T fault{words[1 + byte(0) % (words.size() - 1)], "", byte(1) + 1U};
        fault.value = rest.substr(HEAD, byte(2) + (byte(3) << 8));
        fault.kind = fault.value.empty() ? VS_FAIL : VS_ANSWER;
        rest.remove_prefix(HEAD + fault.value.size());
        vsFaultAdd(fault);
    }
    documentCheck(documentNamed(input.head.substr(0, input.head.find(':'))));
    vsFaultsClear();
    return 0;
}

// Each document with each kind of value in the first two answers of each call that it makes, and with all of them in
// the answers of one call.
std::vector<std::string> targetSeeds()
{
    static const VALUE_T values[] = {
        {"1", std::string(255, 'x')},
        {"0", ""},
        {"2", "7,\"\\\n\x1b\x7f</script>%n%s"},
        {"3", "caf\xc3\xa9 \xe2\x82\xac \xff\xc3\xa9\xc0\x80"},
        {"18446744073709551615", std::string(255, '\xff')},
        {"2147483648", std::string(84, '\\') + std::string(84, '"') + "\xf0\x9f\x8e\xa5"},
    };
    std::vector<std::string> seeds;

    targetBegin();
    for (const std::string &name : documentNames()) {
        std::vector<std::string> calls = callsOf(name);
        std::string head = name + ":";
        for (const std::string &call : calls)
            head += " " + call;
        for (const VALUE_T &value : values) {
            std::string seed = head + "\n";
            for (size_t call = 0; call < calls.size(); call++) {
                for (unsigned use : {0, 1})
                    seed += answer(calls[call], call, use, value);
            }
            seeds.push_back(seed);
        }
        for (size_t i = 0; i < calls.size() * std::size(values) / 2; i++) {
            const std::string &call = calls[i % calls.size()];
            std::string seed = name + ": " + call + "\n";
            for (unsigned use = 0; use < std::size(values); use++)
                seed += answer(call, 0, use, values[(2 * (i / calls.size()) + use) % std::size(values)]);
            seeds.push_back(seed);
        }
    }
    roomsCheck();
    return seeds;
}
