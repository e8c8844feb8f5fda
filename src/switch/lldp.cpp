#include "switch/lldp.h"

// Walks the remote devices of a port. Texts are read into one buffer as large as the platform says a text can be.

#include "runtime/owned.h"
#include "runtime/result.h"

#include <algorithm>

bool lldpDeviceNext(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t *index)
{
    uint32_t previous = *index;

    return rpcclt_openapiLldpIntfRemoteDeviceNextGet(clientHandle, ifNum, previous, index) == OPENCLT_OK &&
           *index > previous;
}

int lldpChassisIdRead(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, uint32_t index, openclt_buffer_t *text)
{
    uint32_t subtype = 0;

    return rpcclt_openapiLldpIntfRemoteDeviceChassisIdGet(clientHandle, ifNum, index, &subtype, text);
}

int lldpTextsVisit(CLIENT_HANDLE_T *clientHandle, uint32_t ifNum, LLDP_READ read, LLDP_VISIT visit, void *context)
{
    uint32_t length = 0;
    int result = rpcclt_openapiLldpMgmtStrLenGet(clientHandle, &length);
    if (result != OPENCLT_OK)
        return result;
    length = std::min(length, LLDP_TEXT_MAX);
    OWNED_ARRAY<char> text = ownedArray<char>(length + 1);
    if (text == nullptr)
        return RESULT_NO_MEMORY;

    uint32_t index = 0;
    while (lldpDeviceNext(clientHandle, ifNum, &index)) {
        openclt_buffer_t buffer = {length, text.get()};
        text[0] = '\0';
        if (read(clientHandle, ifNum, index, &buffer) == OPENCLT_OK && !visit(context, text.get()))
            break;
    }
    return RESULT_OK;
}
