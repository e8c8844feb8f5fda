// profile_template.h - the files that the web interface keeps of a profile type: its template, which says which network
// features such a profile switches on, and its exported configuration.
#pragma once

#include "runtime/json.h"
#include "runtime/paths.h"

#include <cstddef>
#include <cstdint>

// One file, parsed; the document is null when the type has a slash or is empty, or the file is missing or not JSON.
struct PROFILE_FILE_T {
    char profileType[256];
    cJSON *document; // owned by PROFILE_FILES_T
};

// The files of one directory that a build has asked for; each is read once. Ends with the build.
struct PROFILE_FILES_T {
    PATH_ID directory; // PATH_TEMPLATE_DIR or PATH_EXPORT_DIR
    size_t typesMax;   // further types have no document
    OWNED_ARRAY<PROFILE_FILE_T> files;
    size_t count = 0, capacity = 0;

    explicit PROFILE_FILES_T(PATH_ID from, size_t most = SIZE_MAX) : directory(from), typesMax(most)
    {
    }
    PROFILE_FILES_T(const PROFILE_FILES_T &) = delete;
    PROFILE_FILES_T &operator=(const PROFILE_FILES_T &) = delete;
    ~PROFILE_FILES_T();
};

// The file of a profile type; its name is the type with blanks as underscores. Null as above, and without memory.
[[nodiscard]] const cJSON *profileFileGet(PROFILE_FILES_T *files, const char *profileType);

// Whether a template's member of that name is the JSON value true; false for null.
[[nodiscard]] bool profileTemplateIsTrue(const cJSON *profileTemplate, const char *member);
