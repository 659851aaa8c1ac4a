// What the shared-library test loads.

extern "C" int TellSeven();
extern "C" int ordinal_3();

int TellSeven() { return 7; }

int ordinal_3() { return 33; }
