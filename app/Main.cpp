#include "app/Interrupt.h"
#include "app/Program.h"
#include "media/Decoding.h"

int main(int count, char** words) {
    app::EndBySignals();
    media::NameCrashedDecoders();
    return app::RunProgram(count, words);
}
