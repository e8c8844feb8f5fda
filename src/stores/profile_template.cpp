#include "stores/profile_template.h"

// Templates are installed with the web interface, one file a profile type. They are small and change with an upgrade
// only, but nothing is kept here: who asks more than once for a document keeps what it got. Uses the paths and JSON
// reader of runtime/.

#include "runtime/json.h"
#include "runtime/paths.h"
#include "switch/columns.h"

constexpr size_t FILE_NAME_SIZE = 256;

OWNED_JSON profileTemplateLoad(const char *profileType)
{
    char name[FILE_NAME_SIZE];
    char path[PATH_OUTPUT_SIZE + FILE_NAME_SIZE];

    if (profileType[0] == '\0' || !profileFileName(profileType, name, sizeof(name)))
        return nullptr;
    snprintf(path, sizeof(path), "%s%s", PathGet(PATH_TEMPLATE_DIR), name);
    return jsonFileLoad(path);
}

bool profileTemplateIsTrue(const cJSON *profileTemplate, const char *member)
{
    return cJSON_IsTrue(cJSON_GetObjectItem(profileTemplate, member)) != 0;
}
