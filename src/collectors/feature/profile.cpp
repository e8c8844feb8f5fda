#include "collectors/feature/profile.h"

// Joins the template files into one array, in the order of their names. Files are copied without being parsed; if the
// result is no JSON, the envelope refuses the document.

#include "runtime/log.h"
#include "runtime/owned.h"
#include "runtime/paths.h"
#include "runtime/result.h"
#include "switch/slots.h"
#include "switch/swapi.h"

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

constexpr size_t TEXT_MAX = PROFILE_TEMPLATE_BUFFER_SIZE - 1;

// What the switch supports; some templates are offered only then.
struct TEMPLATE_CONDITIONS_T {
    bool dot1as;
    bool smpte;
    bool modularRoom;
};

// Names in strcmp order, whatever the locale.
struct DIR_LIST_T {
    struct dirent **entries = nullptr;
    int count = -1;

    DIR_LIST_T() = default;
    DIR_LIST_T(const DIR_LIST_T &) = delete;
    DIR_LIST_T &operator=(const DIR_LIST_T &) = delete;
    ~DIR_LIST_T()
    {
        for (int i = 0; i < count; i++)
            free(entries[i]);
        free(entries);
    }
};

// The array being written: '[' and the elements, not yet closed.
struct ARRAY_TEXT_T {
    char *text;
    size_t length;
    uint32_t elements;
};

// A machine model that cannot be read offers nothing of its own.
static TEMPLATE_CONDITIONS_T conditionsGet(CLIENT_HANDLE_T *clientHandle)
{
    TEMPLATE_CONDITIONS_T offer = {};
    char model[256] = "";

    (void)machineModelGet(clientHandle, model);         // stays empty when it fails
    (void)featureSupportedGet("DOT1AS", &offer.dot1as); // always 0
    offer.smpte = smpteCapableModelCheck(clientHandle) == 1;
    offer.modularRoom = strstr(model, "TK620-R13") != nullptr;
    return offer;
}

static bool templateOffered(const char *name, const TEMPLATE_CONDITIONS_T &offer)
{
    static const struct {
        const char *name;
        bool TEMPLATE_CONDITIONS_T::*condition;
    } conditions[] = {
        {"Audio_Video_AVB", &TEMPLATE_CONDITIONS_T::dot1as},
        {"Audio_Video_AVB_MILAN", &TEMPLATE_CONDITIONS_T::dot1as},
        {"Audio_Video_AVB_MILAN_with_Dante_PTPv1_PTPv2_or_AES67", &TEMPLATE_CONDITIONS_T::dot1as},
        {"Audio_Video_SMPTE", &TEMPLATE_CONDITIONS_T::smpte},
        {"Poly_StudioNet_Modular_Room_Switch", &TEMPLATE_CONDITIONS_T::modularRoom},
    };

    for (const auto &row : conditions) {
        if (strcmp(name, row.name) == 0)
            return offer.*row.condition;
    }
    return true;
}

// Content of a template, up to its first NUL. False, and passed over, for what cannot be opened or read (logged) and
// for what is no regular file. Not blocking: a pipe in the directory must not hold the daemon.
static bool templateRead(const char *path, char content[TEXT_MAX + 1])
{
    struct stat status;
    OWNED_FD_T file(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.fd >= 0 && fstat(file.fd, &status) == 0 && !S_ISREG(status.st_mode))
        return false;

    size_t length = 0;
    ssize_t got = file.fd < 0 ? -1 : 1;
    while (got > 0) {
        got = read(file.fd, content + length, TEXT_MAX - length);
        length += got > 0 ? static_cast<size_t>(got) : 0;
    }
    content[length] = '\0';
    if (got < 0) // half a template would spoil the list
        LOG_ERROR_AS("ProfileTemplateGet", "ProfileTemplateGet: Failed to open file %s\n", path);
    return got == 0;
}

// False when the array is full.
static bool templateAppend(ARRAY_TEXT_T *array, const char *content)
{
    const size_t length = strlen(content);

    if (array->length + 3 + length > TEXT_MAX) {
        LOG_ERROR_AS("ProfileTemplateGet", "ProfileTemplateGet: Response buffer full, skipping remaining profiles\n");
        return false;
    }
    if (array->elements++ > 0)
        array->text[array->length++] = ',';
    memcpy(array->text + array->length, content, length + 1);
    array->length += length;
    return true;
}

int ProfileTemplateGet(CLIENT_HANDLE_T *clientHandle, int ignored, char *buffer)
{
    (void)ignored;
    const TEMPLATE_CONDITIONS_T offer = conditionsGet(clientHandle);
    const char *const folder = PathGet(PATH_TEMPLATE_DIR);
    ARRAY_TEXT_T array = {buffer, 1, 0};
    DIR_LIST_T list;

    memcpy(buffer, "[", 2);
    list.count = scandir(folder, &list.entries, nullptr, [](const struct dirent **left, const struct dirent **right) {
        return strcmp((*left)->d_name, (*right)->d_name);
    });
    if (list.count < 0)
        LOG_ERROR("Open dir error...\r\n");
    for (int i = 0; i < list.count; i++) {
        char path[1024];
        char content[TEXT_MAX + 1];
        const char *name = list.entries[i]->d_name;
        if (strcmp(name, ".") == 0 || strcmp(name, "..") == 0 || !templateOffered(name, offer))
            continue;
        snprintf(path, sizeof(path), "%s%s", folder, name);
        if (templateRead(path, content) && !templateAppend(&array, content))
            break;
    }
    memcpy(buffer + array.length, "]", 2);
    return RESULT_OK;
}

int profileTemplateBuild(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size)
{
    if (size < PROFILE_TEMPLATE_BUFFER_SIZE)
        return RESULT_INVALID_ARGUMENT;
    return ProfileTemplateGet(clientHandle, 0, buffer);
}

int featureSupportedGet(const char *feature, bool *supported)
{
    (void)feature;
    *supported = true;
    return RESULT_OK;
}
