#include "batch/BatchProgram.h"
#include "platform/process/BackgroundProcess.h"
#include "platform/process/FreedMemory.h"

#include <QByteArrayList>

#include <csignal>

int main(int argc, char *argv[])
{
    // A reader of our output may end before us, which must not interrupt a save.
    std::signal(SIGPIPE, SIG_IGN);
    // A limit on file sizes then causes an error like that of a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    penwick::openMissingStandardStreams();
    penwick::shareMemoryPool();
    QByteArrayList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QByteArray(argv[i]);
    return penwick::runBatchProgram(arguments);
}
