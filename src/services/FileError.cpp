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

FileError FileError::fromErrno(int code, const QString &path)
{
    FileError error;
    error.m_code = code;
    error.m_path = path;
    error.m_systemText = qt_error_string(code);
    return error;
}

FileError FileError::fromDevice(const QFileDevice &device, const QString &path)
{
    FileError error;
    error.m_path = path;
    error.m_systemText = device.errorString();
    error.m_code = errnoByText().value(error.m_systemText, 0);
    if (error.m_code == 0 && device.error() == QFileDevice::ResourceError)
        error.m_code = ENOSPC;
    return error;
}

FileError FileError::invalidUtf8(const QString &path)
{
    FileError error;
    error.m_kind = Kind::InvalidUtf8;
    error.m_path = path;
    error.m_systemText = QStringLiteral("invalid UTF-8");
    return error;
}

FileError FileError::notRegularFile(const QString &path)
{
    FileError error;
    error.m_kind = Kind::NotRegularFile;
    error.m_path = path;
    error.m_systemText = QStringLiteral("not a regular file");
    return error;
}

QString FileError::localizedDescription() const
{
    const QString item = quoted(m_path);
    if (m_kind == Kind::InvalidUtf8)
        return u"Le fichier %1 n'a pas pu être ouvert car son contenu n'est pas du texte UTF-8 "
               u"valide."_s.arg(item);
    if (m_kind == Kind::NotRegularFile)
        return u"%1 n'est pas un fichier ordinaire."_s.arg(item);
    switch (m_code) {
    case ENOENT:
        return u"Le fichier ou le dossier %1 n'existe pas."_s.arg(item);
    case EACCES:
    case EPERM:
        return u"Vous n'avez pas l'autorisation d'accéder à %1."_s.arg(item);
    case EROFS:
        return u"%1 se trouve sur un volume en lecture seule."_s.arg(item);
    case ENOSPC:
    case EDQUOT:
        return u"L'espace disque est insuffisant pour écrire %1."_s.arg(item);
    case EFBIG:
        return u"%1 est trop volumineux."_s.arg(item);
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
