// account_file.h - the daemon's account of itself (runtime/account.h) as a file, for whoever asks why a document is
// old.
#pragma once

// Write the account into its file: beside it, and renamed. A failure leaves the old file, or none, and is not logged:
// it would be at each cycle. Any thread.
void accountFileWrite();
