#include "runtime/service.h"

#ifdef DEVMGR_SYSTEMD

#include <systemd/sd-daemon.h>

// A notice that does not arrive is the manager's loss: it ends what it thinks is stuck.

void serviceReady()
{
    (void)sd_notify(0, "READY=1");
}

void serviceStatus(const char *text)
{
    (void)sd_notifyf(0, "STATUS=%s", text);
}

void serviceAlive()
{
    (void)sd_notify(0, "WATCHDOG=1");
}

#else

void serviceReady()
{
}

void serviceStatus(const char *)
{
}

void serviceAlive()
{
}

#endif
