#include "stores/profile_template.h"

// Both kinds of files are small and change with an upgrade or a new profile only, but nothing is kept from one build to
// the next. Uses the paths and JSON reader of runtime/.

#include "switch/columns.h"

#include <cstring>

constexpr size_t FILES_FIRST = 16;

static cJSON *fileLoad(PATH_ID directory, const char *profileType)
{
    char name[sizeof(PROFILE_FILE_T::profileType)];
    char path[PATH_OUTPUT_SIZE + sizeof(name)];

    if (profileType[0] == '\0' || !profileFileName(profileType, name, sizeof(name)))
        return nullptr;
    snprintf(path, sizeof(path), "%s%s", PathGet(directory), name);
    return jsonFileLoad(path).release();
}

PROFILE_FILES_T::~PROFILE_FILES_T()
{
    for (size_t i = 0; i < count; i++)
        cJSON_Delete(files[i].document);
}

const cJSON *profileFileGet(PROFILE_FILES_T *files, const char *profileType)
{
    for (size_t i = 0; i < files->count; i++) {
        if (strcmp(files->files[i].profileType, profileType) == 0)
            return files->files[i].document;
    }
    if (files->files == nullptr) {
        files->files = ownedArray<PROFILE_FILE_T>(FILES_FIRST);
        files->capacity = files->files == nullptr ? 0 : FILES_FIRST;
    }
    bool full = files->count == files->capacity;
    if (files->count == files->typesMax || files->files == nullptr ||
        (full && !ownedArrayDouble(&files->files, &files->capacity)))
        return nullptr;
    PROFILE_FILE_T &file = files->files[files->count++];
    textCopy(file.profileType, sizeof(file.profileType), profileType);
    file.document = fileLoad(files->directory, profileType);
    return file.document;
}

bool profileTemplateIsTrue(const cJSON *profileTemplate, const char *member)
{
    return cJSON_IsTrue(cJSON_GetObjectItem(profileTemplate, member)) != 0;
}
