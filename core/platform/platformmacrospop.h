// Brings back what platformmacrospush.h has set aside. Ends every header that includes that one.

#if defined(_WIN32)
#pragma pop_macro("CreateEvent")
#pragma pop_macro("CreateWindow")
#pragma pop_macro("CreateWindowA")
#pragma pop_macro("CreateWindowW")
#pragma pop_macro("DispatchMessage")
#pragma pop_macro("GetClassName")
#pragma pop_macro("GetMessage")
#pragma pop_macro("GetObject")
#pragma pop_macro("OpenEvent")
#pragma pop_macro("PeekMessage")
#pragma pop_macro("PostMessage")
#pragma pop_macro("PostThreadMessage")
#pragma pop_macro("RegisterClass")
#pragma pop_macro("SendMessage")
#endif
