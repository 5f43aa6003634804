#include "app/Program.h"

#include <csignal>
#include <initializer_list>

#include <unistd.h>

int main(int count, char** words) {
    // Until a render takes over there is nothing to bring to an end.
    for (int signal : {SIGINT, SIGTERM}) std::signal(signal, [](int caught) { ::_exit(128 + caught); });
    return app::RunProgram(count, words);
}
