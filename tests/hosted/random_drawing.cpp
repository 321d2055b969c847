#include "random_drawing.h"

namespace korvane::test {

const char* RandomDrawing::one_of(std::initializer_list<const char*> choices) {
    return choices.begin()[below(static_cast<std::uint32_t>(choices.size()))];
}

std::string RandomDrawing::number() {
    switch (below(12)) {
        case 0:
            return std::to_string(static_cast<int>(below(4000)) - 2000);
        case 1:
            return one_of({"0", "-1", "639", "640", "1919", "1920", "9E18", "-9E18", "1E9", "2047", ".5"});
        default:
            return std::to_string(below(700));
    }
}

std::string RandomDrawing::logical() {
    return one_of({"0", "1", "-1", "10", "-10", "1000", ".5", "1E-9", "1E30", "639"});
}

std::string RandomDrawing::colour() {
    switch (below(6)) {
        case 0:
            return std::to_string(below(256)) + "," + std::to_string(below(256)) + "," +
                   std::to_string(below(256));
        case 1:
            return std::to_string(below(0x1000000));
        case 2:
            return one_of({"-1", "15", "16", "4294967296", "\"A\""});
        default:
            return std::to_string(below(16));
    }
}

std::string RandomDrawing::optional_colour() {
    return below(3) == 0 ? "" : "," + colour();
}

std::string RandomDrawing::point() {
    return (below(5) == 0 ? "STEP(" : "(") + number() + "," + number() + ")";
}

std::string RandomDrawing::commands() {
    std::string text;
    for (std::uint32_t i = 1 + below(8); i != 0; --i) {
        text += one_of({"U",  "D",      "L",      "R",        "E",         "F",     "G",  "H",
                        "B",  "N",      "A1",     "A3",       "TA30",      "TA-77", "S9", "S200",
                        "C4", "C99999", "M+5,-9", "M300,200", "M-90000,7", "Q"});
        if (below(2) == 0) text += std::to_string(below(90));
    }
    return text;
}

std::string RandomDrawing::window() {
    const std::uint32_t left = 1 + below(80);
    const std::uint32_t top = 1 + below(32);
    return std::to_string(left) + "," + std::to_string(top) + "," + std::to_string(left + below(30)) + "," +
           std::to_string(top + below(12));
}

std::string RandomDrawing::drawing_statement() {
    switch (below(8)) {
        case 0:
            return (below(2) == 0 ? "PSET " : "PRESET ") + point() + optional_colour();
        case 1:
        case 2:
            return "LINE " + (below(4) == 0 ? "" : point()) + "-" + point() +
                   (below(3) == 0 ? "," : optional_colour());
        case 3:
            return "LINE " + point() + "-" + point() + "," + colour() + one_of({",B", ",BF"});
        case 4:
        case 5:
            return "CIRCLE " + point() + "," + number() + optional_colour();
        case 6:
            return "PAINT " + point() + optional_colour();
        default:
            return "DRAW \"" + commands() + "\"";
    }
}

std::string RandomDrawing::area_statement() {
    const std::string corners = "(" + number() + "," + number() + ")-(" + number() + "," + number() + ")";
    switch (below(9)) {
        case 0:
            return "VIEW " + corners + optional_colour() +
                   (below(2) == 0 ? "" : "," + std::to_string(below(16)));
        case 1:
            return "VIEW SCREEN " + corners;
        case 2:
            return "VIEW";
        case 3:
            return std::string("WINDOW ") + one_of({"", "SCREEN "}) + "(" + logical() + "," + logical() +
                   ")-(" + logical() + "," + logical() + ")";
        case 4:
            return "WINDOW";
        case 5:
            return "GET (" + std::to_string(below(600)) + "," + std::to_string(below(450)) + ")-STEP(" +
                   std::to_string(below(60)) + "," + std::to_string(below(60)) + "),A&";
        case 6:
        case 7:
            return "PUT " + point() + ",A&" + one_of({"", ",PSET", ",PRESET", ",AND", ",OR", ",XOR"});
        default:
            return "CLS";
    }
}

std::string RandomDrawing::text_statement() {
    switch (below(9)) {
        case 0:
            return "COLOR " + std::to_string(below(16)) + "," + std::to_string(below(16));
        case 1:
            return "LOCATE " + std::to_string(1 + below(30)) + "," + std::to_string(1 + below(80));
        case 2:
            return "VIEW PRINT " + std::to_string(1 + below(20)) + " TO " + std::to_string(1 + below(40));
        case 3:
            return below(3) == 0 ? "TXTWINDOW" : "TXTWINDOW " + window();
        case 4:
            return "TXTWINDOW @" + std::to_string(below(8)) + "," + window();
        case 5:
            return std::string(one_of({"CLS @", "PRINT @"})) + std::to_string(below(8));
        case 6:
            return "PRINT @" + std::to_string(below(8)) + ",STRING$(" + std::to_string(below(200)) + ",65)";
        default:
            return "PRINT STRING$(" + std::to_string(below(200)) + "," + std::to_string(33 + below(220)) +
                   ")";
    }
}

std::string RandomDrawing::program(int statements, int number) {
    std::string text = "1 ON ERROR GOTO 9000: DIM A&(3000)\r\n2 SCREEN ";
    text += one_of({"640,480", "800,600", "1024,768", "1280,1024", "1920,1080", "640,2048"});
    text += "\r\n";
    for (int i = 0; i < statements; ++i) {
        text += std::to_string(10 + i) + " ";
        switch (below(4)) {
            case 0:
                text += area_statement();
                break;
            case 1:
                text += text_statement();
                break;
            default:
                text += drawing_statement();
        }
        text += "\r\n";
    }
    text += "8000 TXTWINDOW: VIEW PRINT: LOCATE TXTMAXY, 1: PRINT: PRINT: PRINT: DONE = " +
            std::to_string(number) + ": END\r\n9000 RESUME NEXT\r\n";
    return text;
}

}  // namespace korvane::test
