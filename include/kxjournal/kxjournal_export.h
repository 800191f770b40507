#pragma once

#include <QtGlobal>

/// Marks a class or function of the library's public interface. The library
/// is built static by default, where nothing needs marking; a shared build
/// defines KXJOURNAL_SHARED (and KXJOURNAL_BUILDING while it compiles itself).
#if defined(KXJOURNAL_SHARED)
#  if defined(KXJOURNAL_BUILDING)
#    define KXJOURNAL_EXPORT Q_DECL_EXPORT
#  else
#    define KXJOURNAL_EXPORT Q_DECL_IMPORT
#  endif
#else
#  define KXJOURNAL_EXPORT
#endif
