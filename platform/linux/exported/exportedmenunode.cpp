#include "platform/linux/exported/exportedmenunode.h"

QString withoutMnemonic(const QString& label)
{
    QString out;
    out.reserve(label.size());
    for (qsizetype i = 0; i < label.size(); ++i) {
        if (label[i] == u'_') {
            if (i + 1 < label.size() && label[i + 1] == u'_')
                out += u'_', ++i; // "__" stands for one underscore
            continue;
        }
        out += label[i];
    }
    return out.trimmed();
}
