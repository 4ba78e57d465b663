// A window application that draws with DirectFB. To run it without a screen:
//     DFBARGS=system=dummy,mode=640x480 directfb-window --application-type=paint --picture=paint.png
#include "PaintWindow.h"
#include <corvane/WindowExec.h>
#include <exception>
#include <iostream>
#include <string_view>

namespace
{

std::string findPicture(int argc, char** argv)
{
    constexpr std::string_view OPTION = "--picture=";
    for (int i = 1; i < argc; ++i)
        if (std::string_view(argv[i]).substr(0, OPTION.size()) == OPTION)
            return argv[i] + OPTION.size();
    return {};
}

} // namespace

int main(int argc, char** argv)
try {
    Screen screen(&argc, &argv);
    Corvane::WindowExec exec(argc, argv);
    PaintWindow window(argc, argv, screen, findPicture(argc, argv));
    exec.run(&window);
} catch (const std::exception& e) {
    std::cerr << "directfb-window: " << e.what() << std::endl;
    return 1;
}
