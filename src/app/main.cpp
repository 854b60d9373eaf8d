#include "app/commands.h"

int main(int argc, char** argv) {
    if (argc > 1)
        return orvo::app::runCommand(argc, argv);
    return orvo::app::runDesktop(argc, argv);
}
