// image_info.h - the document "imageInfo": names and labels of the switch's code images. Written once at start-up.
#pragma once

#include "switch/session.h"

#include <cstddef>

// Builder into a buffer of 4096 bytes: names and labels, empty where they cannot be read, and "runningImage" when "show
// bootvar" has a row. 0; 10002 without memory; 10000 when the text has 1024 bytes or more, or the print fails (all
// logged). No text on failure.
[[nodiscard]] int getImageInfo(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size);
