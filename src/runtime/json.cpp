// json.cpp - adding, printing and loading JSON so that a document that lost a key is never printed.
//
// The mark of an incomplete document belongs to the thread that builds it. Every add goes through lost(), which sets it
// when the JSON library gives nothing back: it frees what it could not attach, so only the mark is left to do.
#include "runtime/json.h"

#include "runtime/files.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "runtime/utf8.h"

#include <climits>
#include <cstring>

static cJSON *lost(cJSON *added);
static bool fileSize(FILE *stream, size_t *size);

static thread_local bool incomplete = false;

void jsonBuildBegin()
{
    incomplete = false;
}

bool jsonIncomplete()
{
    return incomplete;
}

void jsonAddNumber(cJSON *object, const char *key, double value)
{
    lost(cJSON_AddNumberToObject(object, key, value));
}

void jsonAddText(cJSON *object, const char *key, const char *text)
{
    lost(cJSON_AddStringToObject(object, key, text));
}

void jsonAddBool(cJSON *object, const char *key, bool value)
{
    lost(cJSON_AddBoolToObject(object, key, value));
}

void jsonAddItem(cJSON *object, const char *key, OWNED_JSON item)
{
    if (cJSON_AddItemToObject(object, key, item.get()))
        (void)item.release(); // the tree's now
    else
        incomplete = true;
}

cJSON *jsonAddObject(cJSON *object, const char *key)
{
    return lost(cJSON_AddObjectToObject(object, key));
}

cJSON *jsonAddArray(cJSON *object, const char *key)
{
    return lost(cJSON_AddArrayToObject(object, key));
}

void jsonAppend(cJSON *array, OWNED_JSON item)
{
    if (cJSON_AddItemToArray(array, item.get()))
        (void)item.release(); // the tree's now
    else
        incomplete = true;
}

void jsonAppendNumber(cJSON *array, double value)
{
    jsonAppend(array, OWNED_JSON(cJSON_CreateNumber(value)));
}

void jsonAppendText(cJSON *array, const char *text)
{
    jsonAppend(array, OWNED_JSON(cJSON_CreateString(text)));
}

cJSON *jsonAppendObject(cJSON *array)
{
    cJSON *object = cJSON_CreateObject();
    jsonAppend(array, OWNED_JSON(object));
    return array == nullptr ? nullptr : object;
}

char *jsonPrint(const cJSON *tree, JSON_FORM form)
{
    if (incomplete) {
        incomplete = false;
        return nullptr;
    }
    OWNED_TEXT text(form == JSON_FORMATTED ? cJSON_Print(tree) : cJSON_PrintUnformatted(tree));
    if (text == nullptr || utf8Valid(text.get()))
        return text.release();
    return utf8Clean(text.get());
}

int jsonToStr(const cJSON *tree, JSON_FORM form, char **out)
{
    *out = jsonPrint(tree, form);
    if (*out == nullptr) {
        LOG_ERROR_AS("jsonToStr", "Response error\r\n");
        return RESULT_FAILED;
    }
    return RESULT_OK;
}

// Printed aside first: the JSON library asks for a few bytes more than a text takes when it prints into a buffer.
int jsonPrintInto(const cJSON *tree, JSON_FORM form, char *buffer, size_t size)
{
    if (size == 0)
        return RESULT_FAILED;
    buffer[0] = '\0';
    OWNED_TEXT text(jsonPrint(tree, form));
    if (text == nullptr || strlen(text.get()) >= size)
        return RESULT_FAILED;
    memcpy(buffer, text.get(), strlen(text.get()) + 1);
    return RESULT_OK;
}

OWNED_JSON jsonFileLoad(const char *path)
{
    OWNED_FILE stream(fileOpenRead(path));
    size_t size = 0;
    if (!stream || !fileSize(stream.get(), &size))
        return nullptr;
    if (size > JSON_FILE_MAX) {
        LOG_ERROR("%s: larger than %zu bytes, not read\n", path, JSON_FILE_MAX);
        return nullptr;
    }
    OWNED_TEXT text(static_cast<char *>(malloc(size + 1)));
    if (!text)
        return nullptr;
    size_t length = fread(text.get(), 1, size, stream.get());
    text.get()[length] = '\0';
    return OWNED_JSON(cJSON_Parse(text.get()));
}

static cJSON *lost(cJSON *added)
{
    if (added == nullptr)
        incomplete = true;
    return added;
}

// Size of a file that holds something, the stream back at its begin. False for an empty one.
static bool fileSize(FILE *stream, size_t *size)
{
    if (fseek(stream, 0, SEEK_END) != 0)
        return false;
    long end = ftell(stream);
    if (end <= 0 || end == LONG_MAX || fseek(stream, 0, SEEK_SET) != 0)
        return false;
    *size = static_cast<size_t>(end);
    return true;
}
