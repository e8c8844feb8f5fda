// writeback.h - rebuilding one cached document by its API name.
//
// Under the name's lock: run the builder, wrap its payload in the envelope, write it when it changed. One table of 30
// rows says how each name's builder gives its payload and under which key it is stored.
#pragma once

#include "switch/session.h"

// Rebuild one document. 0 when its builder succeeded (the websocket server is signalled then, whether the text changed
// or not); otherwise the builder's result, or -1 (unknown name, no builder, no lock, no memory). The record keeps its
// old text on any failure.
int rest_db_writeback(CLIENT_HANDLE_T *clientHandle, const char *apiName);

// Names of the table in its order, for tools; null beyond the last.
[[nodiscard]] const char *writebackName(unsigned index);
