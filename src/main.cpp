#include "app/runapp.h"

int main() { return runapp(); }
