// Installs the catalogue of the user's language.

#include <veltor/utils/Translation.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QTranslator>

#include <memory>

/// Has the linker take the catalogues along where the library is a static one. Outside of all namespaces, as
/// Qt demands.
static void initCatalogues()
{
    Q_INIT_RESOURCE(veltor_translations);
}

namespace veltor::utils {
namespace {

const QString& translatorName()
{
    static const QString name = QStringLiteral("veltor::utils::installTranslation");
    return name;
}

/// The translator in use: a child of the application, so that it ends with it.
QTranslator* installedTranslator(const QCoreApplication& application)
{
    return application.findChild<QTranslator*>(translatorName(), Qt::FindDirectChildrenOnly);
}

/// The path of the catalogue for @p locale; empty for the language of the sources and without one.
QString cataloguePath(const QLocale& locale)
{
    const QStringList languages = locale.uiLanguages();
    for (const QString& name : languages) {
        // QTranslator's own search would go past Russian, which has no catalogue, to the next language.
        const QString language = name.section(QLatin1Char('-'), 0, 0);
        if (language == QLatin1String("ru")) {
            break;
        }
        QString path = QStringLiteral(":/veltor-utils/translations/veltor-utils_%1.qm").arg(language);
        if (QFile::exists(path)) {
            return path;
        }
    }
    return QString();
}

} // namespace

bool installTranslation(const QLocale& locale)
{
    initCatalogues();
    QCoreApplication* const application = QCoreApplication::instance();
    if (application == nullptr) {
        return false;
    }
    const QString path = cataloguePath(locale);
    const QTranslator* const former = installedTranslator(*application);
    if (former != nullptr && former->filePath() == path) {
        return true;
    }
    removeTranslation();
    auto translator = std::make_unique<QTranslator>();
    if (path.isEmpty() || !translator->load(path)) {
        return false;
    }
    translator->setObjectName(translatorName());
    translator->setParent(application);
    return QCoreApplication::installTranslator(translator.release());
}

void removeTranslation()
{
    if (const QCoreApplication* const application = QCoreApplication::instance()) {
        // Its destructor takes it out of the application.
        delete installedTranslator(*application);
    }
}

} // namespace veltor::utils
