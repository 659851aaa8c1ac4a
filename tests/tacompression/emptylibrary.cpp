// A library that loads, and has not what the dictionary codec looks for.

extern "C" int ordinal_3();

int ordinal_3() { return 33; }
