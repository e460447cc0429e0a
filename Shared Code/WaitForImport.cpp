#include "WaitForImport.h"

#include "Clock.h"
#include "Scripting.h"

void waitForImport(PhotoApplication& application, Clock& clock)
{
    constexpr double kSecondsBetweenQuestions = 0.1;
    while (application.importing()) {
        clock.sleep(kSecondsBetweenQuestions);
    }
}
