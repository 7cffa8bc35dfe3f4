/* XLATR_API marks what the shared library makes visible; everything else in it is hidden. */
#ifndef XLATR_EXPORT_H
#define XLATR_EXPORT_H

#if defined(_WIN32)
#if defined(XLATR_BUILDING_LIBRARY)
#define XLATR_API __declspec(dllexport)
#else
#define XLATR_API __declspec(dllimport)
#endif
#else
#define XLATR_API __attribute__((visibility("default")))
#endif

#endif
