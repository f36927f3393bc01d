#pragma once
// Owning references to GObjects and GErrors, released when they go out of scope.

#include <glib-object.h>

#include <memory>
#include <string>

namespace odlex::package {

struct GObjectUnref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using GObjectRef = std::unique_ptr<T, GObjectUnref>;

// The message of `error` (freed), or `fallback` when the library gave none.
inline std::string takeMessage(GError* error, const char* fallback) {
  std::string message = error && error->message ? error->message : fallback;
  g_clear_error(&error);
  return message;
}

}  // namespace odlex::package
