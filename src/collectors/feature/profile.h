// profile.h - the document "profile": the VLAN profile templates that the web interface offers, as one array.
// It is written at start only.
//
// Files: every regular file of the template directory (PATH_TEMPLATE_DIR), one JSON value each, its name the template's
// with blanks as underscores. They are not parsed: one that is no JSON value spoils the text, which the envelope then
// refuses. Platform: rpcclt_openapiSystemRegMachineModelGet.
#pragma once

#include "switch/session.h"

#include <cstddef>

constexpr size_t PROFILE_TEMPLATE_BUFFER_SIZE = 30720;

// Write the array, terminated, into a buffer of PROFILE_TEMPLATE_BUFFER_SIZE bytes. The second argument is ignored.
// Always 0: a directory that cannot be read gives "[]", a file that cannot be read and templates that do not fit are
// left out (all logged).
[[nodiscard]] int ProfileTemplateGet(CLIENT_HANDLE_T *clientHandle, int ignored, char *buffer);

// The same as a builder: 10003 when the buffer is smaller than that.
[[nodiscard]] int profileTemplateBuild(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size);

// Whether the platform has a feature, by its name: all models have every feature that is asked for. Always 0.
[[nodiscard]] int featureSupportedGet(const char *feature, bool *supported);
