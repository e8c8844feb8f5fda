#include "restcache/document.h"

// The table as the program handed it in.

#include <algorithm>

static DOCUMENT_TABLE_T table;

void documentTableSet(const DOCUMENT_T *rows, size_t count)
{
    table = {rows, std::min(count, DOCUMENTS_MAX)};
}

const DOCUMENT_TABLE_T &documentTable()
{
    return table;
}

const DOCUMENT_T *documentFind(std::string_view name)
{
    for (const DOCUMENT_T &row : table) {
        if (name == row.name)
            return &row;
    }
    return nullptr;
}

bool documentIsInCycle(const DOCUMENT_T &row)
{
    return row.due.kind != DUE_IN_NO_CYCLE && row.due.kind != DUE_PORT_UP;
}
