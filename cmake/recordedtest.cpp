#include "tabase/tarecordedtest.h"

int main(int argc, char** argv) { return TaRecordedTest::Main(argc, argv); }
