// The program's entry: brings the program up in a fixed order and tears it down in reverse.
#include "app/AppData.h"
#include "app/morvel.h"

#include <ki/log/GLog.h>

#include <QApplication>

int qMain(int argc, char** argv) {
    QApplication app(argc, argv);
    ki::log::configure(argc, argv, true);
    morvel::ini();
    morvel::prog2::AppData data(QStringLiteral(":/wb/shared-res/zh/1"));
    data.load();
    data.dump(0);
    return 0;
}

int main(int argc, char** argv) { return qMain(argc, argv); }
