// The least that a C++ program is: says that it runs, to the descriptor that it is given, and sleeps.
#include <iostream>
#include <string>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc > 1 && write(std::stoi(argv[1]), "!", 1) != 1)
        std::cerr << "nobody listens" << std::endl;
    pause();
}
