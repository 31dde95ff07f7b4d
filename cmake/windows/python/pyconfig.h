/* CPython 3.11 configuration for 64-bit Windows as the official python.org build has it, for compiling
 * the extension with mingw-w64 against the 3.11 headers installed here (no Windows CPython is at hand).
 * Only what the public headers read is set; LLP64: long is 32 bits, Py_ssize_t is 64. */
#ifndef Py_CONFIG_H
#define Py_CONFIG_H

#define MS_WIN32
#define MS_WIN64
#define MS_WINDOWS
#define NT_THREADS
#define WITH_THREAD
#define PLATFORM "win32"
#define Py_WINVER 0x0602
#define Py_NTDDI 0x06020000

/* Extensions link against python311.dll: every API symbol is imported. */
#define Py_ENABLE_SHARED 1
#define HAVE_DECLSPEC_DLL

#include <stdint.h>
#include <basetsd.h>
typedef __int64 Py_ssize_t;
#define HAVE_PY_SSIZE_T 1
#define PY_SSIZE_T_MAX INT64_MAX

#define SIZEOF_SHORT 2
#define SIZEOF_INT 4
#define SIZEOF_LONG 4
#define SIZEOF_LONG_LONG 8
#define SIZEOF_FLOAT 4
#define SIZEOF_DOUBLE 8
#define SIZEOF_VOID_P 8
#define SIZEOF_SIZE_T 8
#define SIZEOF_TIME_T 8
#define SIZEOF_OFF_T 4
#define SIZEOF_FPOS_T 8
#define SIZEOF_WCHAR_T 2
#define SIZEOF__BOOL 1
#define SIZEOF_HKEY 8
#define ALIGNOF_LONG 4
#define ALIGNOF_SIZE_T 8
#define ALIGNOF_MAX_ALIGN_T 8

#define HAVE_USABLE_WCHAR_T 1
#define HAVE_WCHAR_H 1
#define HAVE_STDDEF_H 1
#define HAVE_SYS_STAT_H 1
#define HAVE_DIRECT_H 1
#define HAVE_IO_H 1
#define HAVE_PROCESS_H 1
#define HAVE_STRFTIME 1
#define HAVE_LARGEFILE_SUPPORT 1
#define DOUBLE_IS_LITTLE_ENDIAN_IEEE754 1
#define PY_LONG_LONG long long
#define PY_LLONG_MIN LLONG_MIN
#define PY_LLONG_MAX LLONG_MAX
#define PY_ULLONG_MAX ULLONG_MAX

#define WITH_DOC_STRINGS 1
#define WITH_PYMALLOC 1
#define PY_SUPPORT_TIER 1

#endif /* Py_CONFIG_H */
