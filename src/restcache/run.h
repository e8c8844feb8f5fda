// run.h - building one document and storing it: the one road that every row of the table takes.
//
// Under the name's lock, unless the row is direct: run the builder, wrap its payload in the envelope, write it when it
// changed.
#pragma once

#include "restcache/document.h"

// Build the document of a row. 0 when its builder succeeded (the websocket server is signalled then, whether the text
// changed or not, unless the row is direct); otherwise the builder's result, or -1 (no builder, no lock, no memory).
// The record keeps its old text on any failure. What fails is logged.
int rowRun(CLIENT_HANDLE_T *clientHandle, const DOCUMENT_T &row);

// The same for a document by its API name; also -1 for a name that is unknown, or whose row is direct.
int rest_db_writeback(CLIENT_HANDLE_T *clientHandle, const char *apiName);

// Name of the document that this thread is building; "" when there is none.
[[nodiscard]] const char *documentCurrent();
