// builders.h - THE table: which builder makes the document of which API name.
#pragma once

// Hand every builder of the daemon to the cache. Called once, before anything is written back.
void buildersRegister();
