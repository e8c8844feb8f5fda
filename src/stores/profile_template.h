// profile_template.h - the template of a profile type: which network features such a profile switches on.
#pragma once

#include "runtime/owned.h"

// The template file of a profile type, parsed; its name is the type with blanks as underscores. Empty when the type is
// empty or has a slash, or the file is missing or not JSON. Each call reads the file.
[[nodiscard]] OWNED_JSON profileTemplateLoad(const char *profileType);

// Whether the template's member of that name is the JSON value true; false for an empty template.
[[nodiscard]] bool profileTemplateIsTrue(const cJSON *profileTemplate, const char *member);
