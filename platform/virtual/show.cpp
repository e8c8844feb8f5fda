#include "calls.h"
#include "engine.h"

#include <cstdio>
#include <cstring>

// Show commands: finds what answers a command (a literal text of the scenario, else the renderer in one of the tables
// of show_*.cpp), lets injected faults spoil the text, and writes it to the file the client named. A command that
// nothing answers fails and leaves no file.

static const VS_SHOW_ROW_T *const TABLES[] = {vsShowSystem, vsShowPorts, vsShowTraffic, vsShowFeatures};

// Whether a row answers a command; "show interface *" does so for one non-empty argument.
static bool rowAnswers(const VS_SHOW_ROW_T &row, const std::string &command, std::string &argument)
{
    size_t length = strlen(row.command);
    argument.clear();
    if (length < 2 || strcmp(row.command + length - 2, " *") != 0)
        return command == row.command;
    if (command.size() < length || command.compare(0, length - 1, row.command, length - 1) != 0)
        return false;
    argument = command.substr(length - 1);
    return true;
}

// An exact row goes before one with an argument.
static const VS_SHOW_ROW_T *rowOf(const std::string &command, std::string &argument)
{
    const VS_SHOW_ROW_T *open = nullptr;
    std::string openArgument;
    for (const VS_SHOW_ROW_T *table : TABLES)
        for (const VS_SHOW_ROW_T *row = table; row->command != nullptr; row++) {
            if (!rowAnswers(*row, command, argument))
                continue;
            if (argument.empty())
                return row;
            open = row;
            openArgument = argument;
        }
    argument = openArgument;
    return open;
}

bool vsShowRendered(const std::string &command)
{
    std::string argument;
    return rowOf(command, argument) != nullptr && argument != "*"; // as the list of commands has it
}

bool vsShow(const std::string &command, std::string &text)
{
    if (vsLiteral(command, text))
        return true;
    std::string argument;
    const VS_SHOW_ROW_T *row = rowOf(command, argument);
    if (row == nullptr)
        return false;
    text = row->render(vsState(), vsClock(), argument);
    return true;
}

std::vector<std::string> vsCommandNames()
{
    std::vector<std::string> names;
    for (const VS_SHOW_ROW_T *table : TABLES)
        for (const VS_SHOW_ROW_T *row = table; row->command != nullptr; row++)
            names.emplace_back(row->command);
    return names;
}

static std::string withCrlf(const std::string &text)
{
    std::string out;
    for (char c : text) {
        if (c == '\n')
            out += '\r';
        out += c;
    }
    return out;
}

// Roughly every eighth byte becomes another one; the same text is always spoiled in the same way.
static std::string withGarbage(std::string text)
{
    uint32_t random = 20260301;
    for (char &c : text) {
        random = random * 1664525 + 1013904223;
        if (random >> 29 == 0)
            c = static_cast<char>(random >> 16);
    }
    return text;
}

static std::string spoiled(const VS_FAULT_T &fault, const std::string &text)
{
    switch (fault.kind) {
    case VS_EMPTY:
        return "";
    case VS_CUT:
        return text.substr(0, fault.bytes);
    case VS_CUT_PART:
        return text.substr(0, text.size() * static_cast<size_t>(fault.bytes) / 1000);
    case VS_CRLF:
        return withCrlf(text);
    case VS_GARBAGE:
        return withGarbage(text);
    case VS_FAIL:
    case VS_NO_FILE:
    case VS_ANSWER:
        break;
    }
    return text;
}

static int fileWrite(const std::string &path, const std::string &text)
{
    FILE *file = fopen(path.c_str(), "w");
    if (file == nullptr)
        return OPENCLT_FAIL;
    bool whole = fwrite(text.data(), 1, text.size(), file) == text.size();
    bool closed = fclose(file) == 0;
    return whole && closed ? OPENCLT_OK : OPENCLT_FAIL;
}

ANSWER(rpcclt_openapiCliShowExecuteToFile)
{
    std::string text;
    if (!vsShow(vsTextIn(args.command), text))
        return OPENCLT_FAIL;
    if (call.fault != nullptr && call.fault->kind == VS_NO_FILE)
        return OPENCLT_OK;
    return fileWrite(vsTextIn(args.file), call.fault != nullptr ? spoiled(*call.fault, text) : text);
}
