#include "collectors/feature/image_info.h"

// Names and labels are platform reads into buffers of the platform's own maximum; what runs now stands only in "show
// bootvar", whose reader is shared with other processes (switch/cli.h).

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/cli.h"
#include "switch/columns.h"
#include "switch/swapi.h"

#include <algorithm>
#include <cstring>

// A document must be shorter than this.
constexpr size_t DOCUMENT_LIMIT = 1024;

// What a platform may claim to need for a name.
constexpr uint32_t NAME_LENGTH_MAX = 65536;

enum IMAGE_NAME : uint32_t {
    IMAGE_ACTIVE,
    IMAGE_BACKUP,
    IMAGE_ACTIVATED,
    IMAGE_ACTIVE_LABEL,
    IMAGE_BACKUP_LABEL,
    IMAGE_NAME_COUNT
};

// Five zeroed buffers, each one byte longer than the platform is offered: always terminated.
struct IMAGE_NAMES_T {
    OWNED_ARRAY<char> bytes;
    uint32_t length = 0; // offered
};

// What "show bootvar" says of the first unit; "" when it has no row.
struct RUNNING_IMAGE_T {
    char name[sizeof(BOOTVAR_ROW_T::image3)];
    bool known;
};
static_assert(sizeof(BOOTVAR_ROW_T) == 64, "bytes of a row");

static const char caller[] = "getImageInfo";

static uint32_t managementUnitGet(CLIENT_HANDLE_T *clientHandle)
{
    uint32_t unit = 1;

    int result = rpcclt_openapiUnitMgrNumberGet(clientHandle, &unit);
    if (result != OPENCLT_OK) {
        LOG_ERROR_AS(caller, "Bad return code trying to get managerment unit id. (result = %d)\n", result);
        return 1;
    }
    return unit;
}

// Without a length from the platform the buffers hold nothing, and the names stay empty.
static int namesAllocate(CLIENT_HANDLE_T *clientHandle, IMAGE_NAMES_T *names)
{
    uint32_t length = 0;

    if (rpcclt_openapiImageFileNameMaxLengthGet(clientHandle, &length) != OPENCLT_OK)
        length = 0;
    names->length = std::min(length, NAME_LENGTH_MAX);
    names->bytes = ownedArray<char>(size_t{IMAGE_NAME_COUNT} * (names->length + 1));
    if (names->bytes == nullptr) {
        LOG_ERROR_AS(caller, "Failed to allocate memory for image names\n");
        return RESULT_INVALID_POINTER;
    }
    return RESULT_OK;
}

static char *nameAt(const IMAGE_NAMES_T &names, IMAGE_NAME which)
{
    return names.bytes.get() + size_t{which} * (names.length + 1);
}

static openclt_buffer_t nameBuffer(const IMAGE_NAMES_T &names, IMAGE_NAME which)
{
    return {names.length, nameAt(names, which)};
}

static void imageNamesRead(CLIENT_HANDLE_T *clientHandle, uint32_t unit, IMAGE_NAMES_T *names)
{
    openclt_buffer_t active = nameBuffer(*names, IMAGE_ACTIVE);
    openclt_buffer_t backup = nameBuffer(*names, IMAGE_BACKUP);
    openclt_buffer_t activated = nameBuffer(*names, IMAGE_ACTIVATED);

    int result = rpcclt_openapiImageNamesGet(clientHandle, unit, &active, &backup, &activated);
    if (result == OPENCLT_OK) {
        LOG_DEBUG_AS(caller, "imageNamesGet: activeImage=%s backupImage=%s activatedImage=%s\n", active.bytes,
                     backup.bytes, activated.bytes);
        return;
    }
    LOG_ERROR_AS(caller, "Bad return code trying to get code image names. (result = %d)\n", result);
    *active.bytes = *backup.bytes = *activated.bytes = '\0';
}

static void imageLabelsRead(CLIENT_HANDLE_T *clientHandle, IMAGE_NAMES_T *names)
{
    openclt_buffer_t active = nameBuffer(*names, IMAGE_ACTIVE_LABEL);
    openclt_buffer_t backup = nameBuffer(*names, IMAGE_BACKUP_LABEL);

    int result = rpcclt_openapiImageLabelsGet(clientHandle, &active, &backup);
    if (result == OPENCLT_OK) {
        LOG_DEBUG_AS(caller, "imageLabelsGet: activeLabel=%s backupLabel=%s\n", active.bytes, backup.bytes);
        return;
    }
    LOG_ERROR_AS(caller, "Bad return code trying to get code image labels. (result = %d)\n", result);
    *active.bytes = *backup.bytes = '\0';
}

// A stack whose members cannot be counted is taken for one unit. A reader that failed gives no row, whatever it left.
static int runningImageRead(CLIENT_HANDLE_T *clientHandle, RUNNING_IMAGE_T *running)
{
    uint32_t count = 0;

    *running = {};
    if (unitCountGet(clientHandle, &count) != RESULT_OK || count == 0)
        count = 1;
    OWNED_ARRAY<BOOTVAR_ROW_T> rows = ownedArray<BOOTVAR_ROW_T>(count);
    if (rows == nullptr) {
        LOG_ERROR_AS(caller, "Failed to allocate memory for output\n");
        return RESULT_INVALID_POINTER;
    }
    if (bootvarGetSafe(clientHandle, rows.get(), &count) == RESULT_OK && count > 0) {
        textCopy(running->name, sizeof(running->name), rows[0].image3);
        running->known = true;
    }
    return RESULT_OK;
}

static int documentPrint(const cJSON *root, char *buffer, size_t size)
{
    OWNED_TEXT text(jsonPrint(root, JSON_FORMATTED));

    if (text == nullptr) {
        LOG_ERROR_AS(caller, "package response str error\r\n");
        return RESULT_FAILED;
    }
    size_t length = strlen(text.get());
    if (length >= DOCUMENT_LIMIT || length >= size) {
        LOG_ERROR_AS(caller, "Response JSON too large: %zu bytes (max 1024)\n", length);
        return RESULT_FAILED;
    }
    memcpy(buffer, text.get(), length + 1);
    return RESULT_OK;
}

int getImageInfo(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size)
{
    IMAGE_NAMES_T names;
    RUNNING_IMAGE_T running;

    uint32_t unit = managementUnitGet(clientHandle);
    int result = namesAllocate(clientHandle, &names);
    if (result != RESULT_OK)
        return result;
    imageNamesRead(clientHandle, unit, &names);
    imageLabelsRead(clientHandle, &names);
    result = runningImageRead(clientHandle, &running);
    if (result != RESULT_OK)
        return result;

    OWNED_JSON root(cJSON_CreateObject());
    if (root == nullptr) {
        LOG_ERROR("Failed to create root JSON object\n");
        return RESULT_INVALID_POINTER;
    }
    jsonAddText(root.get(), "activeImage", nameAt(names, IMAGE_ACTIVE));
    jsonAddText(root.get(), "backupImage", nameAt(names, IMAGE_BACKUP));
    jsonAddText(root.get(), "activeLabel", nameAt(names, IMAGE_ACTIVE_LABEL));
    jsonAddText(root.get(), "backupLabel", nameAt(names, IMAGE_BACKUP_LABEL));
    if (running.known)
        jsonAddText(root.get(), "runningImage", running.name);
    return documentPrint(root.get(), buffer, size);
}
