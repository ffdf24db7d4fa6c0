#include "app/AppDelegate.h"

AppDelegate::TerminateReply AppDelegate::applicationShouldTerminate()
{
    return TerminateReply::now;
}
