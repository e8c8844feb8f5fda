// documents.h - THE table: one row a document.
#pragma once

// Hand the table to the cache. Called once, before anything is built.
void documentsRegister();
