// service.h - what the daemon tells the service manager that started it. Without one, and in a build without
// libsystemd, all of it does nothing. Any thread.
#pragma once

// The process serves: "systemctl start" returns. Once.
void serviceReady();

// What it is doing, for "systemctl status".
void serviceStatus(const char *text);

// It is not stuck. The unit's WatchdogSec is how long it may be silent.
void serviceAlive();
