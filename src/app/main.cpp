#include "app/Application.h"

int main(int argc, char** argv)
{
    Application app(argc, argv);
    return app.run();
}
