#pragma once

/// PLATFORM_API marks what the library `groundwork`, which contains the platform services, exports;
/// PLATFORM_TEMPLATE a class template whose instances are to be one type in all libraries, even
/// where these hide their symbols.
#if defined(_WIN32)
#if defined(GROUNDWORK_BUILD)
#define PLATFORM_API __declspec(dllexport)
#else
#define PLATFORM_API __declspec(dllimport)
#endif
#define PLATFORM_TEMPLATE
#else
#define PLATFORM_API __attribute__((visibility("default")))
#define PLATFORM_TEMPLATE __attribute__((visibility("default")))
#endif

/// Stands beside the member `name`, where windows.h has a macro of that name (see
/// platformmacrospush.h): in code that includes windows.h a call arrives under the name that the
/// macro gives it, with A or W at its end. `arguments` are those of the call that passes it on:
/// PLATFORM_RENAMED(int, GetMessage, (int number), const, (number))
/// A macro with parameters of its own, as CreateWindow has, only lets itself be avoided: users then
/// write (object.CreateWindow)(...).
#if defined(_WIN32)
#define PLATFORM_RENAMED(result, name, parameters, qualifiers, arguments)                          \
    result name##A parameters qualifiers { return name arguments; }                                \
    result name##W parameters qualifiers { return name arguments; }
#else
#define PLATFORM_RENAMED(result, name, parameters, qualifiers, arguments)
#endif
