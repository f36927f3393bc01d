// The input stream type behind newSourceInputStream, in GObject's C conventions: an instance
// struct that starts with its parent, a class struct, and the virtual functions of
// GInputStream and GSeekable filled in at class and interface initialisation.

#include "package/cabinet/SourceInputStream.h"

#include <algorithm>
#include <array>
#include <string>

namespace odlex::package {

namespace {

// Where the stream stands in its source. Kept behind a pointer: GObject zero-fills the
// instance and knows nothing of C++ members.
struct Position {
  std::shared_ptr<const storage::StreamSource> source;
  std::unique_ptr<storage::StreamReader> reader;  // null until the first read
  std::uint64_t offset = 0;                       // where the next read starts
  std::uint64_t readerOffset = 0;                 // how far `reader` has read

  void setError(GError** error, const std::string& reason) const {
    g_set_error(error, G_IO_ERROR, G_IO_ERROR_FAILED, "%s", reason.c_str());
  }

  // Brings `reader` to `offset`, opening the source again when the offset lies behind it.
  bool catchUp(GError** error) {
    std::string reason;
    if (!reader || readerOffset > offset) {
      reader = source->open(reason);
      readerOffset = 0;
      if (!reader) {
        setError(error, reason);
        return false;
      }
    }
    std::array<std::uint8_t, 1 << 15> dropped;
    while (readerOffset < offset) {
      const std::size_t length =
          static_cast<std::size_t>(std::min<std::uint64_t>(offset - readerOffset, dropped.size()));
      if (!reader->read(dropped.data(), length, reason)) {
        setError(error, reason);
        return false;
      }
      readerOffset += length;
    }
    return true;
  }

  gssize read(void* buffer, gsize count, GError** error) {
    const std::uint64_t size = source->size();
    if (offset >= size || count == 0)
      return 0;
    const std::size_t length =
        static_cast<std::size_t>(std::min<std::uint64_t>({size - offset, count, G_MAXSSIZE}));
    if (!catchUp(error))
      return -1;
    std::string reason;
    if (!reader->read(static_cast<std::uint8_t*>(buffer), length, reason)) {
      setError(error, reason);
      return -1;
    }
    offset += length;
    readerOffset = offset;
    return static_cast<gssize>(length);
  }

  gboolean seek(goffset by, GSeekType from, GError** error) {
    const std::uint64_t size = source->size();
    const std::int64_t base = from == G_SEEK_SET   ? 0
                              : from == G_SEEK_CUR ? static_cast<std::int64_t>(offset)
                                                   : static_cast<std::int64_t>(size);
    std::int64_t target = 0;
    if (__builtin_add_overflow(base, by, &target) || target < 0) {
      g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_INVALID_ARGUMENT, "seek outside a stream");
      return FALSE;
    }
    offset = static_cast<std::uint64_t>(target);
    return TRUE;
  }
};

}  // namespace

}  // namespace odlex::package

extern "C" {

struct OdlexSourceStream {
  GInputStream parent;
  odlex::package::Position* position;
};

struct OdlexSourceStreamClass {
  GInputStreamClass parentClass;
};

static void odlex_source_stream_seekable_init(GSeekableIface* iface);

G_DEFINE_TYPE_WITH_CODE(OdlexSourceStream, odlex_source_stream, G_TYPE_INPUT_STREAM,
                        G_IMPLEMENT_INTERFACE(G_TYPE_SEEKABLE, odlex_source_stream_seekable_init))

static odlex::package::Position& positionOf(gpointer stream) {
  return *reinterpret_cast<OdlexSourceStream*>(stream)->position;
}

static gssize odlex_source_stream_read(GInputStream* stream, void* buffer, gsize count,
                                       GCancellable*, GError** error) {
  return positionOf(stream).read(buffer, count, error);
}

static gboolean odlex_source_stream_close(GInputStream*, GCancellable*, GError**) {
  return TRUE;
}

static void odlex_source_stream_finalize(GObject* object) {
  delete reinterpret_cast<OdlexSourceStream*>(object)->position;
  G_OBJECT_CLASS(odlex_source_stream_parent_class)->finalize(object);
}

static void odlex_source_stream_class_init(OdlexSourceStreamClass* klass) {
  G_OBJECT_CLASS(klass)->finalize = odlex_source_stream_finalize;
  G_INPUT_STREAM_CLASS(klass)->read_fn = odlex_source_stream_read;
  G_INPUT_STREAM_CLASS(klass)->close_fn = odlex_source_stream_close;
}

static void odlex_source_stream_init(OdlexSourceStream* stream) {
  stream->position = new odlex::package::Position();
}

static goffset odlex_source_stream_tell(GSeekable* seekable) {
  return static_cast<goffset>(positionOf(seekable).offset);
}

static gboolean odlex_source_stream_can_seek(GSeekable*) {
  return TRUE;
}

static gboolean odlex_source_stream_seek(GSeekable* seekable, goffset offset, GSeekType type,
                                         GCancellable*, GError** error) {
  return positionOf(seekable).seek(offset, type, error);
}

static gboolean odlex_source_stream_can_truncate(GSeekable*) {
  return FALSE;
}

static gboolean odlex_source_stream_truncate(GSeekable*, goffset, GCancellable*, GError** error) {
  g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_NOT_SUPPORTED, "a read-only stream");
  return FALSE;
}

static void odlex_source_stream_seekable_init(GSeekableIface* iface) {
  iface->tell = odlex_source_stream_tell;
  iface->can_seek = odlex_source_stream_can_seek;
  iface->seek = odlex_source_stream_seek;
  iface->can_truncate = odlex_source_stream_can_truncate;
  iface->truncate_fn = odlex_source_stream_truncate;
}

}  // extern "C"

namespace odlex::package {

GInputStream* newSourceInputStream(std::shared_ptr<const storage::StreamSource> source) {
  auto* stream =
      static_cast<OdlexSourceStream*>(g_object_new(odlex_source_stream_get_type(), nullptr));
  stream->position->source = std::move(source);
  return G_INPUT_STREAM(stream);
}

}  // namespace odlex::package
