#include "collectors/port/neighbor_ex_rows.h"

// Rows are printed by a format, not through a tree: there can be 16,384 of them in every second cycle. What stands in
// quotes comes from other devices, so each text is escaped, and cut where its limit says. Uses runtime/json_escape.h.

#include "runtime/json_escape.h"
#include "switch/labels.h"

#include <cstdio>

// Escaped lengths, terminators included.
constexpr size_t PORT_NAME_SIZE = 120;
constexpr size_t LLDP_HOST_SIZE = 256;
constexpr size_t FDB_HOST_SIZE = 64;
constexpr size_t PORT_ID_SIZE = 512;
constexpr size_t UNLIMITED_SIZE = NEIGHBOR_ROW_SIZE; // a text cut at this leaves no room for its row

// Texts of a row, escaped.
struct ESCAPED_T {
    char port[PORT_LABEL_SIZE];
    char portName[PORT_NAME_SIZE];
    char hostName[LLDP_HOST_SIZE];
    char address[UNLIMITED_SIZE];
    char mac[UNLIMITED_SIZE];
    char portId[PORT_ID_SIZE];
};

static void rowEscape(NEIGHBOR_ROW_FORM form, const NEIGHBOR_ROW_T &row, ESCAPED_T *texts)
{
    size_t hostSize = form == NEIGHBOR_ROW_LLDP ? LLDP_HOST_SIZE : FDB_HOST_SIZE;

    portLabel(&row.interface->usp, texts->port);
    jsonEscape(row.interface->name, JSON_CONTROLS_DROP, texts->portName, sizeof(texts->portName));
    jsonEscape(row.hostName, JSON_CONTROLS_DROP, texts->hostName, hostSize);
    jsonEscape(row.address, JSON_CONTROLS_DROP, texts->address, sizeof(texts->address));
    jsonEscape(row.mac, JSON_CONTROLS_DROP, texts->mac, sizeof(texts->mac));
    jsonEscape(row.portId, JSON_CONTROLS_DROP, texts->portId, sizeof(texts->portId));
}

static int lldpRowPrint(const NEIGHBOR_ROW_T &row, const ESCAPED_T &texts, char out[NEIGHBOR_ROW_SIZE])
{
    return snprintf(out, NEIGHBOR_ROW_SIZE,
                    "{\"port\":\"%s\",\"portNum\":%u,\"portName\":\"%s\",\"unit\":%u,\"vlanId\":%u,"
                    "\"hostName\":\"%s\",\"hostIpAddress\":\"%s\",\"hostMacAddress\":\"%s\","
                    "\"remotePortId\":\"%s\",\"source\":\"lldp\"}",
                    texts.port, row.ifNum, texts.portName, row.interface->usp.unit, row.vlanId, texts.hostName,
                    texts.address, texts.mac, texts.portId);
}

static int fdbRowPrint(const NEIGHBOR_ROW_T &row, const ESCAPED_T &texts, char out[NEIGHBOR_ROW_SIZE])
{
    return snprintf(out, NEIGHBOR_ROW_SIZE,
                    "{\"port\":\"%s\",\"portNum\":%u,\"portName\":\"%s\",\"unit\":%u,\"hostName\":\"%s\","
                    "\"vlanId\":%u,\"hostIpAddress\":\"%s\",\"hostMacAddress\":\"%s\","
                    "\"remotePortId\":\"\",\"source\":\"arp\"}",
                    texts.port, row.ifNum, texts.portName, row.interface->usp.unit, texts.hostName, row.vlanId,
                    texts.address, texts.mac);
}

size_t neighborRowPrint(NEIGHBOR_ROW_FORM form, const NEIGHBOR_ROW_T &row, char out[NEIGHBOR_ROW_SIZE])
{
    ESCAPED_T texts;

    rowEscape(form, row, &texts);
    int length = form == NEIGHBOR_ROW_LLDP ? lldpRowPrint(row, texts, out) : fdbRowPrint(row, texts, out);
    return length > 0 && static_cast<size_t>(length) < NEIGHBOR_ROW_SIZE ? static_cast<size_t>(length) : 0;
}
