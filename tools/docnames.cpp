// docnames.cpp - what the table of documents says, one document a line, for scripts and checks.
//
// Without an option the API names of all documents. With --scheduled only those that start-up and the cycles write by
// themselves, as they stand in the cache: a document written in chunks by its first record. With --rows, separated by
// tabs: name, when due, period, phase, place at the start (0 for none), "chunks" or "record".

#include "documents.h"
#include "restcache/document.h"

#include <cstdio>
#include <cstring>

static const char *dueWord(DUE_KIND kind)
{
    switch (kind) {
    case DUE_IN_NO_CYCLE:
        break;
    case DUE_CYCLES:
        return "cycles";
    case DUE_LINK_WATCH:
        return "link watch";
    case DUE_PORT_UP:
        return "port up";
    case DUE_REQUEST:
        return "request";
    }
    return "no cycle";
}

int main(int argc, char **argv)
{
    bool scheduled = argc == 2 && strcmp(argv[1], "--scheduled") == 0;
    bool rows = argc == 2 && strcmp(argv[1], "--rows") == 0;

    if (argc > 1 && !scheduled && !rows) {
        fputs("usage: docnames [--scheduled | --rows]\n", stderr);
        return 2;
    }
    documentsRegister();
    for (const DOCUMENT_T &row : documentTable()) {
        bool chunks = row.chunks != CHUNK_NONE;
        if (rows)
            printf("%s\t%s\t%u\t%u\t%u\t%s\n", row.name, dueWord(row.due.kind), row.due.period, row.due.phase,
                   row.start, chunks ? "chunks" : "record");
        else if (!scheduled || row.due.kind != DUE_IN_NO_CYCLE || row.start != 0)
            printf("%s%s\n", row.name, scheduled && chunks ? "/0" : "");
    }
    return 0;
}
