#pragma once
// A seekable GInputStream over a stream source, so that the cabinet library reads a cabinet
// where it lies (inside a package, or in a file) a piece at a time instead of from a copy in
// memory.

#include <gio/gio.h>

#include <memory>

#include "storage/CompoundFile.h"

namespace odlex::package {

// A new input stream reading `source` from its first byte; the caller owns the reference
// (g_object_unref). Seeking forward reads and drops the bytes in between; seeking back opens
// the source again and reads up to the position. REQUIRES: `source` stays readable while the
// stream is used.
GInputStream* newSourceInputStream(std::shared_ptr<const storage::StreamSource> source);

}  // namespace odlex::package
