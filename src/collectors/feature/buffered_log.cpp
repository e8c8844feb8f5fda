#include "collectors/feature/buffered_log.h"

// Thousands of entries each cycle: the document is written straight into a growing text, not through a tree. The text
// grows before an entry is written, so that an entry is whole or missing.

#include "restcache/store.h"
#include "runtime/json_escape.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/result.h"

#include <cstring>

constexpr uint32_t ENTRY_SIZE = 592; // bytes offered to the platform
constexpr size_t FIRST_SIZE = 8192;
constexpr uint32_t ENTRIES_MAX = 99999;
constexpr size_t ESCAPED = 6; // bytes that one byte can become
constexpr char header[] = "{\"bufferedLog\":[";
constexpr char footer[] = "],\"resp\":{\"respCode\":0,\"respMsg\":\"Success\",\"status\":\"success\"}}";

struct LOG_DOCUMENT_T {
    OWNED_TEXT text;
    size_t length = 0;
    size_t size = 0;
};

static const char caller[] = "get_buffered_log";

// For texts that fit.
static void textAppend(LOG_DOCUMENT_T *document, const char *text)
{
    size_t length = strlen(text);

    memcpy(document->text.get() + document->length, text, length + 1);
    document->length += length;
}

// Text of the next entry without its line feed. The index is the platform's cursor and says nothing else: it may rise,
// fall or stay.
static bool entryNext(CLIENT_HANDLE_T *clientHandle, uint32_t *index, char *entry)
{
    openclt_buffer_t buffer = {ENTRY_SIZE, entry};

    entry[0] = '\0';
    if (rpcclt_openapiBufferedLogEntryNextGet(clientHandle, index, &buffer) != OPENCLT_OK)
        return false;
    size_t length = strlen(entry);
    if (length > 0 && entry[length - 1] == '\n')
        entry[length - 1] = '\0';
    return true;
}

// Double until `need` more bytes fit, terminator included. False without memory; the document is untouched then.
static bool textGrow(LOG_DOCUMENT_T *document, size_t need)
{
    size_t size = document->size;

    while (size - document->length < need)
        size *= 2;
    if (size == document->size)
        return true;
    char *text = static_cast<char *>(realloc(document->text.get(), size));
    if (text == nullptr)
        return false;
    (void)document->text.release(); // realloc took it over
    document->text.reset(text);
    document->size = size;
    return true;
}

static bool entryAppend(LOG_DOCUMENT_T *document, const char *entry, bool first)
{
    if (!textGrow(document, ESCAPED * strlen(entry) + sizeof(",\"\"")))
        return false;
    textAppend(document, first ? "\"" : ",\"");
    document->length += jsonEscape(entry, JSON_CONTROLS_HEX, document->text.get() + document->length,
                                   document->size - document->length);
    textAppend(document, "\"");
    return true;
}

static void entriesAppend(CLIENT_HANDLE_T *clientHandle, char *entry, LOG_DOCUMENT_T *document)
{
    uint32_t index = 0, count = 0;

    while (count < ENTRIES_MAX && entryNext(clientHandle, &index, entry)) {
        if (!entryAppend(document, entry, count == 0)) {
            LOG_ERROR_AS(caller, "get_buffered_log: realloc failed at count=%u\n", count);
            return;
        }
        count++;
    }
}

int get_buffered_log(CLIENT_HANDLE_T *clientHandle)
{
    LOG_DOCUMENT_T document;

    // One byte more than the platform is offered: always terminated.
    OWNED_TEXT entry(static_cast<char *>(calloc(1, ENTRY_SIZE + 1)));
    if (entry == nullptr) {
        LOG_ERROR("get_buffered_log: Failed to allocate log buffer\n");
        return RESULT_ERROR;
    }
    document.text.reset(static_cast<char *>(malloc(FIRST_SIZE)));
    document.size = FIRST_SIZE;
    if (document.text == nullptr) {
        LOG_ERROR("get_buffered_log: Failed to allocate json buffer\n");
        return RESULT_ERROR;
    }
    textAppend(&document, header);
    entriesAppend(clientHandle, entry.get(), &document);
    if (!textGrow(&document, sizeof(footer))) {
        LOG_ERROR("get_buffered_log: realloc failed for footer, truncating\n");
        return RESULT_ERROR;
    }
    textAppend(&document, footer);
    (void)restapi_db_operation(REST_DB_WRITE, "bufferedLog", document.text.get()); // logs; the next cycle tries again
    return RESULT_OK;
}
