#include "app/CommandLine.h"

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    try {
        return brevant::app::runCommandLine(args, std::cin, std::cout, std::cerr);
    } catch (const std::exception& e) {
        std::cerr << "brevant: " << e.what() << '\n';
        return 1;
    }
}
