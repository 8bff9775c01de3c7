#pragma once

struct TCommandLine;

// trunkdesk --copy-store FROM TO [--replace]: the copy with a line per table
// on standard output, a failure's reason on standard error. 0 when the copy
// is done, 1 when nothing was copied. Needs a QCoreApplication.
int CopyStoreCommand(const TCommandLine &cl);
