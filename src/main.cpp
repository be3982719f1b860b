#include "shell/runapp.h"

int main() {
    return runapp();
}
