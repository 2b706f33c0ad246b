/*
 * lsan_suppressions.cpp -- leaks that LeakSanitizer finds inside COIN-OR's
 * own libraries during longer branch-and-cut searches, suppressed for the
 * engine tests.
 *
 * They are all indirect leaks of Cbc's node bookkeeping (warm-start bases
 * and their differences, packed cut vectors) allocated inside libCbc,
 * libOsiClp and libCoinUtils; those libraries are built without frame
 * pointers, so the reported stacks end in them.  The engine owns every
 * object it creates through RAII; a leak allocated by the engine's own code
 * (a stack without these libraries) is still reported.
 */

extern "C" const char *__lsan_default_suppressions() {
  return "leak:libCbc.so\n"
         "leak:libOsiClp.so\n"
         "leak:libCoinUtils.so\n";
}
