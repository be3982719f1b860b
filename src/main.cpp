#include "shell/runapp.h"

int main(int argc, char** argv) {
    return runapp(argc, argv);
}
