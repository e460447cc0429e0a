#include "Scripting.h"

QString ScriptingObject::description() const
{
    const QString kind = scriptingClass() == ScriptingClass::Photo ? QStringLiteral("photo")
                                                                   : QStringLiteral("album");
    return QStringLiteral("%1 id %2").arg(kind).arg(id());
}

bool isSameObject(const ScriptingObjectPtr& left, const ScriptingObjectPtr& right)
{
    if (!left || !right) {
        return left == right;
    }
    return left->scriptingClass() == right->scriptingClass() && left->id() == right->id();
}
