// notify.h - telling the websocket server what changed: the change list, one name a line, and the signal.
#pragma once

#include <cstddef>
#include <string_view>

// Set by every change; read and cleared by changesSignal.
extern int restDbChanged;

// Append a name to the change list. False when the list cannot be opened or the line does not get into it.
bool restDbAnnounce(const char *apiName);

// Announce the names of all records, as far as they can be read.
void restDbNamesAnnounce();

// Whether a name can stand on a line of the change list.
constexpr size_t RESTDB_NAME_SIZE = 256;
[[nodiscard]] bool isListable(std::string_view name);

// Send SIGINT to the thread of the websocket server that its id file names; nothing when there is none, or when the
// file belongs to a user who could not send it either (logged).
void send_signal_to_ws();

// One signal for all changes since the last call; none when nothing changed.
void changesSignal();
