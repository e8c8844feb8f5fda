// buffered_log.h - the document "bufferedLog": the switch's own log, one string an entry. Every cycle.
#pragma once

#include "switch/session.h"

// Builder that writes its own record, a complete document, into the cache. The entries end where the platform's call
// fails, at the latest with the 99999th. 0 when it was handed to the cache; -1 (logged) without memory, and nothing is
// written then. A log that outgrows the memory ends with the last entry that fits.
int get_buffered_log(CLIENT_HANDLE_T *clientHandle);
