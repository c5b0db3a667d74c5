/* What the headers of Python ask about 64-bit Windows, for extensions that use the stable interface alone and are compiled
 * with MinGW. Debian's headers are those of every system but for this file. */
#ifndef VORLUND_PYCONFIG_H
#define VORLUND_PYCONFIG_H

#define MS_WIN32
#define MS_WIN64
#define MS_WINDOWS
#define HAVE_DECLSPEC_DLL
#define Py_ENABLE_SHARED 1

#define SIZEOF_SHORT 2
#define SIZEOF_INT 4
#define SIZEOF_LONG 4
#define SIZEOF_LONG_LONG 8
#define SIZEOF_VOID_P 8
#define SIZEOF_SIZE_T 8
#define SIZEOF_TIME_T 8
#define SIZEOF_WCHAR_T 2
#define SIZEOF_OFF_T 4
#define SIZEOF_FPOS_T 8
#define SIZEOF_HKEY 8
#define ALIGNOF_MAX_ALIGN_T 8
#define ALIGNOF_SIZE_T 8

#define HAVE_ERRNO_H 1
#define HAVE_STDINT_H 1
#define HAVE_STDDEF_H 1
#define HAVE_SYS_TYPES_H 1
#define HAVE_SYS_STAT_H 1
#define HAVE_STDDEF_H 1
#define HAVE_WCHAR_H 1
#define HAVE_STRFTIME 1
#define HAVE_PROTOTYPES 1
#define WITH_THREAD 1
#define NT_THREADS 1
#define PLATLIBDIR "lib"

#include <basetsd.h>
typedef SSIZE_T Py_ssize_t;
#define HAVE_PY_SSIZE_T 1
#define PY_SSIZE_T_MAX ((Py_ssize_t)(((size_t)-1) >> 1))

#endif
