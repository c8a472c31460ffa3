#include <unistd.h>

extern int number_of_other_source;
int number_of_other_source = getpid();
