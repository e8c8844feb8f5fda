// json.h - building documents with cJSON: one line a key, and no key lost in silence.
//
// A key that cannot be added for want of memory marks the document being built as incomplete, and printing an
// incomplete document fails. So a builder adds its keys without a look at each result, and a document that lacks one is
// never stored.
#pragma once

#include "runtime/owned.h"

#include <cstdint>

// Start of a document: forget an earlier one's mark. Called by whoever calls a builder.
void jsonBuildBegin();

// Whether a key or element has been lost since jsonBuildBegin.
[[nodiscard]] bool jsonIncomplete();

// Add one member; `object` may be null after a failed creation (the mark is set then).
void jsonAddNumber(cJSON *object, const char *key, double value);
void jsonAddText(cJSON *object, const char *key, const char *text);
void jsonAddBool(cJSON *object, const char *key, bool value);
void jsonAddItem(cJSON *object, const char *key, OWNED_JSON item); // takes the item, also when it fails
cJSON *jsonAddObject(cJSON *object, const char *key);              // owned by `object`; null when it fails
cJSON *jsonAddArray(cJSON *object, const char *key);

// Append one element to an array.
void jsonAppend(cJSON *array, OWNED_JSON item);
void jsonAppendNumber(cJSON *array, double value);
void jsonAppendText(cJSON *array, const char *text);
cJSON *jsonAppendObject(cJSON *array);

enum JSON_FORM : int { JSON_COMPACT, JSON_FORMATTED };

// Print a tree into a newly allocated text, which the caller frees; bytes that are no UTF-8 character become U+FFFD,
// since a reader would refuse the whole document. Null when the print fails or the document is incomplete.
[[nodiscard]] char *jsonPrint(const cJSON *tree, JSON_FORM form);

// The same for builders whose print failure is reported under "jsonToStr": logs "Response error" and gives 10000 with
// *out null; 0 with the text otherwise.
[[nodiscard]] int jsonToStr(const cJSON *tree, JSON_FORM form, char **out);

// Print a tree into a caller's buffer, terminated. 0; 10000 with the buffer empty when the print fails, the document is
// incomplete, or its text does not fit.
[[nodiscard]] int jsonPrintInto(const cJSON *tree, JSON_FORM form, char *buffer, size_t size);

// Largest file that is read: some ten times a configuration of a full stack. A parsed file takes up to 32 times as
// much.
constexpr size_t JSON_FILE_MAX = 2 * 1024 * 1024;

// Read a whole file and parse it. Empty when the file is missing, empty, too large (logged), not JSON, or there is no
// memory.
[[nodiscard]] OWNED_JSON jsonFileLoad(const char *path);
