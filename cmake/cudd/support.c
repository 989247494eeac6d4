/* What CUDD takes from the program around it. */
#include <stdio.h>

#include "misc/util/abc_global.h"

abctime Extra_CpuTime(void) { return Abc_Clock(); }

/* The memory that CUDD aims at when it is given no bound of its own. */
int Extra_GetSoftDataLimit(void) { return 1 << 26; }

/* Called when malloc() failed. Only if this returns does CUDD set its error code. */
static void leave_it_to_the_caller(long size) { (void)size; }
void (*Extra_UtilMMoutOfMemory)(long) = leave_it_to_the_caller;
