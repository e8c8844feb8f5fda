// proc_libs.cpp - the virtual switch's process library: there is no crash log to register with.

#include <proc_libs.h>

int l7proc_crashlog_register(void)
{
    return 0;
}
