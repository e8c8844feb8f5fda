#include "restcache/run.h"

// Rows differ in how the builder gives its payload, in a few flags, and in the words of their log lines, which carry
// the name of the row's adapter ("wb_" and the API name) and of its builder.

#include "restcache/envelope.h"
#include "restcache/lock.h"
#include "restcache/notify.h"
#include "restcache/store.h"
#include "runtime/account.h"
#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/process_state.h"
#include "runtime/result.h"
#include "runtime/service.h"

#include <cstdio>
#include <cstring>

constexpr size_t OWN_BUFFER_SIZE = 1024;

// One run. What it holds is released when it ends, the lock last.
struct RUN_T {
    struct LOCK_T {
        int fd = -1;
        LOCK_T() = default;
        LOCK_T(const LOCK_T &) = delete;
        LOCK_T &operator=(const LOCK_T &) = delete;
        ~LOCK_T()
        {
            rest_db_lock_release(fd);
        }
    } lock;
    OWNED_TEXT text; // payload that this run allocated
    char own[OWN_BUFFER_SIZE] = {};
    char *buffer = nullptr; // where a BUILDER_BUFFER writes
    OWNED_JSON object;      // what a BUILDER_OBJECT fills
    const char *payload = nullptr;
};

// Buffer of the rows marked ROW_SHARED_BUFFER. It keeps its largest size for the life of the process.
struct SHARED_BUFFER_T {
    size_t size;
    char *bytes;
};
static SHARED_BUFFER_T shared;

static void sharedReset()
{
    free(shared.bytes);
    shared = {0, nullptr};
}
static PROCESS_STATE_T sharedState(sharedReset);

static thread_local const DOCUMENT_T *currentRow; // the tools build on threads of their own

const char *documentCurrent()
{
    return currentRow == nullptr ? "" : currentRow->name;
}

struct NAME_T {
    char text[80];
};

// As a file name: without '/'.
static NAME_T lockName(const DOCUMENT_T &row)
{
    NAME_T name;

    snprintf(name.text, sizeof(name.text), "%s", row.name);
    for (char *slash = strchr(name.text, '/'); slash != nullptr; slash = strchr(slash, '/'))
        *slash = '_';
    return name;
}

// Who logs for a row.
static NAME_T callerName(const DOCUMENT_T &row)
{
    NAME_T name;

    if (row.words.caller != nullptr)
        snprintf(name.text, sizeof(name.text), "%s", row.words.caller);
    else
        snprintf(name.text, sizeof(name.text), "wb_%.70s", lockName(row).text);
    return name;
}

static bool isLinked(const DOCUMENT_T &row)
{
    const BUILDER_T &builder = row.builder;
    const char *word = row.words.notLinked != nullptr ? row.words.notLinked : builder.name;

    if (builder.text != nullptr || builder.buffer != nullptr || builder.object != nullptr || builder.writes != nullptr)
        return true;
    NAME_T caller = callerName(row);
    if (row.isDirect)
        LOG_ERROR_AS("GetAllRestApiData", "%s: %s not linked\n", row.name, word);
    else
        LOG_ERROR_AS(caller.text, "%s: %s not linked\n", caller.text, word);
    return false;
}

// Grow while the size does not exceed the need: 8192 bytes for a need of 4096, 16384 for one of 8192.
static bool sharedGrow(size_t need)
{
    if (shared.size > need)
        return true;
    size_t size = shared.size == 0 ? 1024 : shared.size;
    while (size <= need)
        size *= 2;
    char *bytes = static_cast<char *>(realloc(shared.bytes, size));
    if (bytes == nullptr)
        return false;
    shared = {size, bytes};
    return true;
}

static bool bufferPrepare(const DOCUMENT_T &row, RUN_T *run)
{
    const size_t size = row.builder.size;

    if ((row.flags & ROW_SHARED_BUFFER) != 0) {
        if (!sharedGrow(size))
            return false;
        memset(shared.bytes, 0, size);
        run->buffer = shared.bytes;
    } else if (size <= sizeof(run->own)) {
        run->buffer = run->own;
    } else {
        run->text.reset(static_cast<char *>(calloc(1, size)));
        run->buffer = run->text.get();
    }
    return run->buffer != nullptr;
}

// Where the builder will put its payload; false when there is no memory for it (logged as the row wants it).
static bool outputPrepare(const DOCUMENT_T &row, RUN_T *run)
{
    const char *failed = nullptr;

    if (row.builder.kind == BUILDER_BUFFER && !bufferPrepare(row, run))
        failed = "alloc failed";
    if (row.builder.kind == BUILDER_OBJECT) {
        run->object.reset(cJSON_CreateObject());
        if (run->object == nullptr)
            failed = "cJSON_CreateObject failed";
    }
    if (failed == nullptr)
        return true;
    NAME_T caller = callerName(row);
    if ((row.flags & ROW_ALLOC_SILENT) == 0)
        LOG_ERROR_AS(caller.text, "%s: %s\n", caller.text, failed);
    return false;
}

static int builderRun(CLIENT_HANDLE_T *clientHandle, const BUILDER_T &builder, RUN_T *run)
{
    char *text = nullptr;
    int result = RESULT_ERROR;

    switch (builder.kind) {
    case BUILDER_TEXT:
        result = builder.text(clientHandle, &text);
        run->text.reset(text);
        run->payload = text;
        break;
    case BUILDER_BUFFER:
        result = builder.buffer(clientHandle, run->buffer, builder.size);
        run->payload = run->buffer;
        break;
    case BUILDER_OBJECT:
        result = builder.object(clientHandle, 1, run->object.get());
        if (result == RESULT_OK)
            run->text.reset(jsonPrint(run->object.get(), JSON_FORMATTED));
        run->payload = run->text.get();
        break;
    case BUILDER_WRITES:
        result = builder.writes(clientHandle);
        break;
    }
    return result;
}

// Only an envelope that was built is written. What the store did with it does not count: it logs its own failures, and
// the next run tries again.
static void payloadStore(const DOCUMENT_T &row, const char *payload)
{
    char fixed[OWN_BUFFER_SIZE] = {};
    char *envelope = nullptr;

    if ((row.flags & ROW_FIXED_ENVELOPE) != 0) {
        if (responseJsonStr(RESULT_OK, row.payloadKey, payload, fixed, sizeof(fixed)) == RESULT_OK)
            (void)restapi_db_operation(REST_DB_WRITE, row.name, fixed);
        return;
    }
    int result = responseJsonRreallocStr(RESULT_OK, row.payloadKey, payload, &envelope);
    OWNED_TEXT owned(envelope);
    if (result == RESULT_OK)
        (void)restapi_db_operation(REST_DB_WRITE, row.name, envelope);
}

static void failureLog(const DOCUMENT_T &row, int result)
{
    NAME_T caller = callerName(row);
    const char *words = row.words.failed;

    if (words != nullptr)
        LOG_ERROR_AS(caller.text, "%s: %s result=%d\n", caller.text, words, result);
    else
        LOG_ERROR_AS(caller.text, "%s: %s failed result=%d\n", caller.text, row.builder.name, result);
}

static int buildAndStore(CLIENT_HANDLE_T *clientHandle, const DOCUMENT_T &row)
{
    RUN_T run;

    if (!isLinked(row))
        return RESULT_ERROR;
    if (!row.isDirect && rest_db_lock_acquire(lockName(row).text, &run.lock.fd) != RESULT_OK) {
        restDbNotStoredAdd();
        return RESULT_ERROR;
    }
    if (!outputPrepare(row, &run))
        return RESULT_ERROR;
    jsonBuildBegin();
    int result = builderRun(clientHandle, row.builder, &run);
    if (result == RESULT_EMPTY && (row.flags & ROW_EMPTY_OK) != 0)
        result = RESULT_OK;
    bool stores = row.builder.kind != BUILDER_WRITES;
    bool given = !stores || run.payload != nullptr || (row.flags & ROW_NO_PAYLOAD_OK) != 0;
    if (result != RESULT_OK || !given) {
        if (stores || !row.isDirect)
            failureLog(row, result);
    } else if (stores) {
        payloadStore(row, run.payload);
    }
    return result;
}

int rowRun(CLIENT_HANDLE_T *clientHandle, const DOCUMENT_T &row)
{
    currentRow = &row;
    accountDocumentBegin(row.name);
    int result = buildAndStore(clientHandle, row);
    accountDocumentEnd(row.name, result);
    currentRow = nullptr;
    serviceAlive();
    if (result == RESULT_OK && !row.isDirect)
        send_signal_to_ws();
    return result;
}

int rest_db_writeback(CLIENT_HANDLE_T *clientHandle, const char *apiName)
{
    if (clientHandle == nullptr || apiName == nullptr) {
        LOG_ERROR("rest_db_writeback: NULL handle or api_name\n");
        return RESULT_ERROR;
    }
    const DOCUMENT_T *row = documentFind(apiName);
    if (row == nullptr || row->isDirect) {
        LOG_ERROR("rest_db_writeback: unknown api_name '%s'\n", apiName);
        return RESULT_ERROR;
    }
    return rowRun(clientHandle, *row);
}
