#include "collectors/system/special_interface_route.h"

// The service port as the web interface shows it. A read that fails leaves an empty text, or type 3; the document is
// always made.

#include "runtime/json.h"
#include "runtime/log.h"
#include "runtime/result.h"
#include "switch/columns.h"

static int protocolType(CLIENT_HANDLE_T *clientHandle)
{
    uint32_t mode = 0;

    if (rpcclt_openapiServicePortIPv4ProtocolModeGet(clientHandle, &mode) != OPENCLT_OK)
        return 3;
    switch (mode) {
    case 3:
        return 1;
    case 1:
        return 2;
    default:
        return 3;
    }
}

int getSpecialInfInfo(CLIENT_HANDLE_T *clientHandle, char *buffer, size_t size)
{
    char ip[16] = "", mask[16] = "", gateway[16] = "";

    int type = protocolType(clientHandle);
    (void)servicePortIPv4ParametersGet(clientHandle, ip, mask, gateway); // logged; the texts stay empty

    OWNED_JSON info(cJSON_CreateObject());
    if (info == nullptr)
        return RESULT_INVALID_POINTER;
    jsonAddNumber(info.get(), "protocolType", type);
    jsonAddText(info.get(), "ip", ip);
    jsonAddText(info.get(), "mask", mask);
    jsonAddText(info.get(), "gateway", gateway);

    OWNED_TEXT text(jsonPrint(info.get(), JSON_FORMATTED));
    if (text == nullptr)
        LOG_ERROR("package response str error\r\n");
    else
        textCopy(buffer, size, text.get());
    return RESULT_OK;
}

int servicePortIPv4ParametersGet(CLIENT_HANDLE_T *clientHandle, char ip[16], char mask[16], char gateway[16])
{
    uint32_t address = 0, addressMask = 0, gatewayAddress = 0;

    int result = rpcclt_openapiServicePortIPv4AddrGet(clientHandle, &address, &addressMask);
    if (result != OPENCLT_OK) {
        LOG_ERROR("Bad return code trying to get service port IP address and subnet mask. (result = %d)\n", result);
        return result;
    }
    ipv4Text(address, ip);
    ipv4Text(addressMask, mask);

    result = rpcclt_openapiServicePortGatewayIPv4AddrGet(clientHandle, &gatewayAddress);
    if (result != OPENCLT_OK) {
        LOG_ERROR("Bad return code trying to get service port gateway. (result = %d)\n", result);
        return result;
    }
    ipv4Text(gatewayAddress, gateway);
    return RESULT_OK;
}
