#pragma once

#include <QCoreApplication>
#include <QString>

/// What the controller's open panels say, word for word as users of the program know it.
namespace AccessTexts
{

inline QString translated(const char* english)
{
    return QCoreApplication::translate("CorvaneAppDelegate", english);
}

/// Title of both panels.
inline QString title()
{
    return translated("Read Access Required");
}

inline QString libraryPrompt()
{
    return translated("Corvane requests read access to your iPhoto Library in order to create "
                      "albums for image events.\nSelect it and hit the Open button.");
}

/// `name`: last part of the path of the item that could not be read.
inline QString firstFilePrompt(const QString& name)
{
    return translated("Corvane Requires read access to %1.\nPlease select it or it's parent folder "
                      "and hit the Open button.")
        .arg(name);
}

inline QString laterFilePrompt(const QString& name)
{
    return translated("Corvane Requires read access to %1.\nThis is due to externally referenced "
                      "images in your library.  To avoid being asked again please select the "
                      "parent folder for all your externally referenced pictures.")
        .arg(name);
}

} // namespace AccessTexts
