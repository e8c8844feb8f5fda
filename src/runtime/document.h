// document.h - which document is being built, for whoever counts calls or injects a fault.
#pragma once

// Name the document whose builder is about to run; null when it has ended. The text must outlive the build.
void documentSet(const char *apiName);

// Name of the document being built by this thread; "" when there is none.
[[nodiscard]] const char *documentCurrent();
