#include "FileError.h"

#include <QFileDevice>
#include <QFileInfo>
#include <QHash>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace {

// Qt reports file errors as qt_error_string(errno); mapping those texts back gives the code.
const QHash<QString, int> &errnoByText()
{
    static const QHash<QString, int> table = [] {
        QHash<QString, int> map;
        for (int code : {EACCES, EPERM, ENOENT, ENOTDIR, EISDIR, ENOSPC, EDQUOT, EROFS, EEXIST,
                         ENOTEMPTY, ENAMETOOLONG, EIO, EBUSY, EMFILE, ENFILE, ELOOP, EFBIG})
            map.insert(qt_error_string(code), code);
        return map;
    }();
    return table;
}

QString quoted(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    // French quotation marks take non-breaking spaces inside.
    return u"\u00AB\u00A0"_s + (name.isEmpty() ? path : name) + u"\u00A0\u00BB"_s;
}

} // namespace

FileError::FileError(Kind kind, int code, const QString &path, const QString &systemText)
    : m_kind(kind), m_code(code), m_path(path), m_systemText(systemText)
{ }

FileError FileError::fromErrno(int code, const QString &path)
{
    return FileError(Kind::System, code, path, qt_error_string(code));
}

FileError FileError::fromDevice(const QFileDevice &device, const QString &path)
{
    const QString text = device.errorString();
    int code = errnoByText().value(text, 0);
    if (code == 0 && device.error() == QFileDevice::ResourceError)
        code = ENOSPC;
    return FileError(Kind::System, code, path, text);
}

FileError FileError::invalidUtf8(const QString &path)
{
    return FileError(Kind::InvalidUtf8, 0, path, u"invalid UTF-8"_s);
}

FileError FileError::notRegularFile(const QString &path)
{
    return FileError(Kind::NotRegularFile, 0, path, u"not a regular file"_s);
}

FileError FileError::readOnlyFile(const QString &path)
{
    return FileError(Kind::ReadOnlyFile, EACCES, path, qt_error_string(EACCES));
}

QString FileError::localizedDescription() const
{
    const QString item = quoted(m_path);
    if (m_kind == Kind::InvalidUtf8)
        return u"Le fichier %1 n'a pas pu être ouvert car son contenu n'est pas du texte UTF-8 "
               u"valide."_s.arg(item);
    if (m_kind == Kind::NotRegularFile)
        return u"%1 n'est pas un fichier ordinaire."_s.arg(item);
    if (m_kind == Kind::ReadOnlyFile)
        return u"Le fichier %1 est en lecture seule."_s.arg(item);
    switch (m_code) {
    case ENOENT:
        return u"Le fichier ou le dossier %1 n'existe pas."_s.arg(item);
    case EACCES:
    case EPERM:
        return u"Vous n'avez pas l'autorisation d'accéder à %1."_s.arg(item);
    case EROFS:
        return u"%1 se trouve sur un volume en lecture seule."_s.arg(item);
    case ENOSPC:
        return u"L'espace disque est insuffisant pour écrire %1."_s.arg(item);
    case EDQUOT:
        return u"Votre quota d'espace disque est atteint\u00A0: %1 n'a pas pu être écrit."_s.arg(
            item);
    case EFBIG:
        return u"%1 dépasse la taille de fichier autorisée."_s.arg(item);
    case EISDIR:
        return u"%1 est un dossier."_s.arg(item);
    case ENOTDIR:
        return u"Le chemin de %1 passe par un élément qui n'est pas un dossier."_s.arg(item);
    case ENAMETOOLONG:
        return u"Le nom %1 est trop long."_s.arg(item);
    case EEXIST:
        return u"Un élément nommé %1 existe déjà."_s.arg(item);
    case ENOTEMPTY:
        return u"Le dossier %1 n'est pas vide."_s.arg(item);
    case EIO:
        return u"Une erreur d'entrée-sortie s'est produite sur %1."_s.arg(item);
    case EBUSY:
        return u"%1 est en cours d'utilisation."_s.arg(item);
    case EMFILE:
    case ENFILE:
        return u"Trop de fichiers sont ouverts pour accéder à %1."_s.arg(item);
    case ELOOP:
        return u"Le chemin de %1 contient trop de liens symboliques."_s.arg(item);
    default:
        return u"L'opération sur %1 a échoué (%2)."_s.arg(item, m_systemText);
    }
}
