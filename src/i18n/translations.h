#pragma once

#include <QLocale>
#include <QString>

/// The language the screens and kestrine-cli speak. English is the language the texts are written
/// in; every other language is a catalogue of i18n/ compiled into the program's resources.
namespace kestrine::i18n {

/// The locale whose language the texts are shown in: the one of LC_ALL, LC_MESSAGES or LANG (the
/// first that is set), as Qt reads them, with the languages LANGUAGE lists tried first; under the
/// C or POSIX locale it is English whatever LANGUAGE says, as gettext has it.
QLocale messagesLocale();

/// Installs on the running application the catalogue of the user's language (messagesLocale()),
/// else the English one, which holds only the English plural forms; then Qt's own catalogue of
/// that language, when the system has it (Debian: qt6-translations-l10n), for the words Qt itself
/// shows: the file dialog's, `kestrine --help`'s. Call it after the application object is made and
/// before any text is shown; later calls change nothing. Answers the language of the catalogue in
/// use ("de", "en").
QString installTranslations();

} // namespace kestrine::i18n
