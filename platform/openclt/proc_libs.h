/*
 * proc_libs.h - what devmgr uses of the platform's process library (libproc_libs.so).
 */
#ifndef PROC_LIBS_H
#define PROC_LIBS_H

#ifdef __cplusplus
extern "C" {
#endif

/* Register this process with the platform's crash-log facility. Called once, before the client registers; the result
 * carries nothing that devmgr acts on. */
int l7proc_crashlog_register(void);

#ifdef __cplusplus
}
#endif

#endif
