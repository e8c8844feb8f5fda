// envelope.h - the outer shape of every document, and the messages of the result codes.
//
//     { "<payload key>": <payload>, "resp": { "respCode": 0, "respMsg": "Success", "status": "success" } }
#pragma once

#include <cstddef>

// Message of a result code (static text); "Error code unknown" for one that no row carries.
[[nodiscard]] const char *respCodeMsgGet(int code);

// Build an envelope and store the newly allocated text in *text, freeing the one that was there. The payload may be
// that very text. The payload is added only when the code is 0 and both key and payload are given. 0; 10000 (logged)
// when it does not parse, print, or fit in memory: *text is untouched then.
[[nodiscard]] int responseJsonRreallocStr(int code, const char *key, const char *payload, char **text);

// The same envelope into a caller's buffer, zero-terminated. 0, or -1; one that does not fit is refused and the buffer
// left as it was.
[[nodiscard]] int responseJsonStr(int code, const char *key, const char *payload, char *buffer, size_t size);
