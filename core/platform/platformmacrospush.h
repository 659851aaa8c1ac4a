// Sets aside the macros of the system's headers whose names our members have, until
// platformmacrospop.h brings them back: a user's code may include windows.h before our headers or
// after them. Stands behind the last #include of a header that declares such a member; without
// #pragma once, for every such header includes it. tools/windowsnames.py finds the names.

#if defined(_WIN32)
#pragma push_macro("CreateEvent")
#undef CreateEvent
#pragma push_macro("CreateWindow")
#undef CreateWindow
#pragma push_macro("CreateWindowA")
#undef CreateWindowA
#pragma push_macro("CreateWindowW")
#undef CreateWindowW
#pragma push_macro("DispatchMessage")
#undef DispatchMessage
#pragma push_macro("GetClassName")
#undef GetClassName
#pragma push_macro("GetMessage")
#undef GetMessage
#pragma push_macro("GetObject")
#undef GetObject
#pragma push_macro("OpenEvent")
#undef OpenEvent
#pragma push_macro("PeekMessage")
#undef PeekMessage
#pragma push_macro("PostMessage")
#undef PostMessage
#pragma push_macro("PostThreadMessage")
#undef PostThreadMessage
#pragma push_macro("RegisterClass")
#undef RegisterClass
#pragma push_macro("SendMessage")
#undef SendMessage
#endif
