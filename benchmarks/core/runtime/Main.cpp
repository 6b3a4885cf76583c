#include <QCoreApplication>
#include <benchmark/benchmark.h>

/// Local sockets need an application object.
int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
