<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>APIError</name>
    <message>
        <source>Authentication failed. Check your token.</source>
        <translation>Anmeldung fehlgeschlagen. Prüfe dein Token.</translation>
    </message>
    <message>
        <source>This branch is out of date or conflicts with the base branch. Update the branch and try again.</source>
        <translation>Dieser Branch ist veraltet oder steht im Konflikt mit dem Basis-Branch. Aktualisiere den Branch und versuche es erneut.</translation>
    </message>
    <message>
        <source>Server error (%1): %2</source>
        <translation>Serverfehler (%1): %2</translation>
    </message>
    <message>
        <source>Server error (%1).</source>
        <translation>Serverfehler (%1).</translation>
    </message>
    <message>
        <source>Could not parse the server response: %1</source>
        <translation>Die Antwort des Servers konnte nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>The instance URL is invalid.</source>
        <translation>Die Instanz-URL ist ungültig.</translation>
    </message>
    <message>
        <source>The server returned an invalid response.</source>
        <translation>Der Server hat eine ungültige Antwort gesendet.</translation>
    </message>
    <message>
        <source>Not found.</source>
        <translation>Nicht gefunden.</translation>
    </message>
    <message>
        <source>Unknown error.</source>
        <translation>Unbekannter Fehler.</translation>
    </message>
</context>
<context>
    <name>AppDialog</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>ChecksTab</name>
    <message>
        <source>No workflow runs for this head commit.</source>
        <translation>Keine Workflow-Läufe für diesen Head-Commit.</translation>
    </message>
    <message>
        <source>Re-run</source>
        <comment>re-run the job&apos;s workflow run</comment>
        <translation>Neu starten</translation>
    </message>
    <message>
        <source>Logs</source>
        <comment>the job&apos;s log</comment>
        <translation>Log</translation>
    </message>
    <message>
        <source>Commit statuses</source>
        <translation>Commit-Status</translation>
    </message>
    <message>
        <source>Details</source>
        <comment>opens the commit status&apos;s page</comment>
        <translation>Details</translation>
    </message>
</context>
<context>
    <name>Cli</name>
    <message>
        <source>unknown command %1</source>
        <translation>unbekannter Befehl %1</translation>
    </message>
    <message>
        <source>no command given</source>
        <translation>kein Befehl angegeben</translation>
    </message>
</context>
<context>
    <name>CliActions</name>
    <message>
        <source>Commented on %1.</source>
        <translation>%1 kommentiert.</translation>
    </message>
    <message>
        <source>Approved %1.</source>
        <translation>%1 genehmigt.</translation>
    </message>
    <message>
        <source>Requested changes on %1.</source>
        <translation>Änderungen an %1 angefordert.</translation>
    </message>
    <message>
        <source>Closed %1.</source>
        <translation>%1 geschlossen.</translation>
    </message>
    <message>
        <source>Reopened %1.</source>
        <translation>%1 wieder geöffnet.</translation>
    </message>
    <message>
        <source>Re-running run %1 of %2.</source>
        <extracomment>%1 is the run&apos;s id, %2 the pull request (owner/name#42).</extracomment>
        <translation>Lauf %1 von %2 wird neu gestartet.</translation>
    </message>
    <message>
        <source>TEXT is trimmed of blanks and line breaks at both ends, as the comment sheet sends it; &quot;-&quot;
reads it from standard input. A text starting with &quot;-&quot; goes after &quot;--&quot;.</source>
        <translation>TEXT wird an beiden Enden um Leerzeichen und Zeilenumbrüche gekürzt, wie ihn das Kommentarfenster
sendet; &quot;-&quot; liest ihn von der Standardeingabe. Ein Text, der mit &quot;-&quot; beginnt, gehört hinter &quot;--&quot;.</translation>
    </message>
    <message>
        <source>Post a comment on a pull request</source>
        <translation>Einen Pull-Request kommentieren</translation>
    </message>
    <message>
        <source>Approve a pull request, with an optional text</source>
        <translation>Einen Pull-Request genehmigen, wahlweise mit Text</translation>
    </message>
    <message>
        <source>Request changes on a pull request</source>
        <translation>Änderungen an einem Pull-Request anfordern</translation>
    </message>
    <message>
        <source>Close a pull request</source>
        <translation>Einen Pull-Request schließen</translation>
    </message>
    <message>
        <source>Reopen a closed pull request</source>
        <translation>Einen geschlossenen Pull-Request wieder öffnen</translation>
    </message>
    <message>
        <source>Re-run a workflow run of a pull request</source>
        <translation>Einen Workflow-Lauf eines Pull-Requests neu starten</translation>
    </message>
    <message>
        <source>show lists the runs of the pull request&apos;s head commit and their ids.</source>
        <translation>show listet die Läufe des Head-Commits des Pull-Requests mit ihren IDs auf.</translation>
    </message>
</context>
<context>
    <name>CliArguments</name>
    <message>
        <source>unknown option %1</source>
        <translation>unbekannte Option %1</translation>
    </message>
    <message>
        <source>%1 takes no value</source>
        <translation>%1 nimmt keinen Wert</translation>
    </message>
    <message>
        <source>%1 needs a value (%2)</source>
        <translation>%1 braucht einen Wert (%2)</translation>
    </message>
    <message>
        <source>missing %1</source>
        <translation>%1 fehlt</translation>
    </message>
    <message>
        <source>too many arguments</source>
        <translation>zu viele Argumente</translation>
    </message>
</context>
<context>
    <name>CliCheck</name>
    <message>
        <source>Run one background check and print how many notifications it posted</source>
        <translation>Einmal im Hintergrund prüfen und die Zahl gesendeter Benachrichtigungen ausgeben</translation>
    </message>
    <message>
        <source>Posts desktop notifications for new pull requests and for changes of their CI status, and
remembers what it announced, exactly as the app&apos;s background refresh. It does nothing and
prints 0 while notificationsEnabled is false or no instance is configured. The systemd
user timer kestrine-check.timer runs it every 15 minutes.</source>
        <translation>Sendet Desktop-Benachrichtigungen zu neuen Pull-Requests und zu Änderungen ihres CI-Status und
merkt sich, was gemeldet wurde, genau wie die Hintergrundaktualisierung der App. Solange
notificationsEnabled false ist oder keine Instanz eingerichtet ist, tut sie nichts und gibt 0
aus. Der systemd-Benutzer-Timer kestrine-check.timer führt sie alle 15 Minuten aus.</translation>
    </message>
</context>
<context>
    <name>CliDetail</name>
    <message>
        <source>%1 is a full name such as owner/name</source>
        <translation>%1 ist ein vollständiger Name wie besitzer/name</translation>
    </message>
    <message>
        <source>%1 is a positive whole number</source>
        <translation>%1 ist eine positive ganze Zahl</translation>
    </message>
    <message>
        <source>the text is empty</source>
        <translation>der Text ist leer</translation>
    </message>
    <message>
        <source>Couldn&apos;t load PR</source>
        <translation>PR konnte nicht geladen werden</translation>
    </message>
</context>
<context>
    <name>CliDiff</name>
    <message>
        <source>Print the diff of one changed file of a pull request</source>
        <translation>Den Diff einer geänderten Datei eines Pull-Requests ausgeben</translation>
    </message>
    <message>
        <source>Prints the lines of FILE&apos;s section of the pull request&apos;s diff, one per line, exactly as the
diff screen lists them: the first is the rest of the file&apos;s &quot;+++ b/&quot; line, normally
empty. When FILE&apos;s section cannot be found (a deleted file, a name that is not in the
diff) the whole pull request&apos;s diff is printed, as in the app.</source>
        <translation>Gibt die Zeilen des Abschnitts von DATEI im Diff des Pull-Requests aus, eine pro Zeile, genau
wie der Diff-Bildschirm sie auflistet: Die erste ist der Rest der Zeile &quot;+++ b/&quot; der Datei,
normalerweise leer. Wird der Abschnitt von DATEI nicht gefunden (eine gelöschte Datei, ein
Name, der nicht im Diff steht), wird der ganze Diff des Pull-Requests ausgegeben, wie in der App.</translation>
    </message>
</context>
<context>
    <name>CliHelp</name>
    <message>
        <source>use the built-in demo instance; nothing of yours is read or written</source>
        <translation>die eingebaute Demo-Instanz verwenden; nichts von dir wird gelesen oder geschrieben</translation>
    </message>
    <message>
        <source>show this help</source>
        <translation>diese Hilfe anzeigen</translation>
    </message>
    <message>
        <source>show the version</source>
        <translation>die Version anzeigen</translation>
    </message>
    <message>
        <source>the instance URL for this run, instead of the stored one</source>
        <translation>die Instanz-URL für diesen Aufruf statt der gespeicherten</translation>
    </message>
    <message>
        <source>the access token for this run, instead of the stored one; never stored</source>
        <translation>das Zugriffstoken für diesen Aufruf statt des gespeicherten; nie gespeichert</translation>
    </message>
    <message>
        <source>holds norrum/kestrine.json: the settings and the log</source>
        <translation>enthält norrum/kestrine.json: die Einstellungen und das Protokoll</translation>
    </message>
    <message>
        <source>holds norrum/kestrine/: the inbox cache and the notification state</source>
        <translation>enthält norrum/kestrine/: Posteingangs-Cache und Benachrichtigungsstand</translation>
    </message>
    <message>
        <source>what open hands a page to where xdg-open is not installed</source>
        <translation>wem open eine Seite übergibt, wo xdg-open nicht installiert ist</translation>
    </message>
    <message>
        <source>Usage: %1 [--demo] COMMAND [ARGUMENTS]</source>
        <translation>Aufruf: %1 [--demo] BEFEHL [ARGUMENTE]</translation>
    </message>
    <message>
        <source>Kestrine on a terminal: the inbox, pull requests and their actions, the settings and the
log of the Kestrine app, for scripts, CI jobs and the background check of a systemd timer.</source>
        <translation>Kestrine im Terminal: der Posteingang, Pull-Requests und ihre Aktionen, die Einstellungen und
das Protokoll der Kestrine-App, für Skripte, CI-Jobs und die Hintergrundprüfung eines
systemd-Timers.</translation>
    </message>
    <message>
        <source>Commands:</source>
        <translation>Befehle:</translation>
    </message>
    <message>
        <source>Options:</source>
        <translation>Optionen:</translation>
    </message>
    <message>
        <source>Run &apos;%1 COMMAND --help&apos; for what a command takes and prints.</source>
        <translation>&apos;%1 BEFEHL --help&apos; zeigt, was ein Befehl erwartet und ausgibt.</translation>
    </message>
    <message>
        <source>Environment:</source>
        <translation>Umgebung:</translation>
    </message>
    <message>
        <source>Exit status: 0 success; 1 the operation failed (its error on standard error);
2 the command line was wrong.</source>
        <translation>Exit-Status: 0 Erfolg; 1 der Vorgang ist fehlgeschlagen (sein Fehler steht auf der
Standardfehlerausgabe); 2 die Befehlszeile war falsch.</translation>
    </message>
    <message>
        <source>Usage: %1 %2%3</source>
        <translation>Aufruf: %1 %2%3</translation>
    </message>
    <message>
        <source>%1: %2
Run &apos;%3&apos; for usage.</source>
        <extracomment>A wrong command line: %1 is the program, %2 what was wrong, %3 the command that shows help.</extracomment>
        <translation>%1: %2
Der Aufruf steht in &apos;%3&apos;.</translation>
    </message>
</context>
<context>
    <name>CliInbox</name>
    <message>
        <source>List the open pull requests of the watched repositories</source>
        <translation>Die offenen Pull-Requests der beobachteten Repositories auflisten</translation>
    </message>
    <message>
        <source>print the rows as a JSON array of {repo, pr}</source>
        <translation>die Zeilen als JSON-Array aus {repo, pr} ausgeben</translation>
    </message>
    <message>
        <source>Loads the inbox as the app does and prints one line per pull request, newest update first:
  #NUMBER&lt;TAB&gt;OWNER/REPO&lt;TAB&gt;TITLE, with &lt;TAB&gt;draft after a draft&apos;s title.
Tabs and line breaks in a title are printed as spaces. When notifications are on, the
background check runs after the load, as in the app, and the command waits for it.
Fails when nothing could be loaded; some repositories failing is only logged.</source>
        <extracomment>The rows themselves are data for scripts: &quot;draft&quot; stays as it is.</extracomment>
        <translation>Lädt den Posteingang wie die App und gibt eine Zeile pro Pull-Request aus, die neueste
Aktualisierung zuerst:
  #NUMMER&lt;TAB&gt;BESITZER/REPO&lt;TAB&gt;TITEL, bei einem Entwurf mit &lt;TAB&gt;draft nach dem Titel.
Tabulatoren und Zeilenumbrüche im Titel werden als Leerzeichen ausgegeben. Sind
Benachrichtigungen eingeschaltet, läuft nach dem Laden die Hintergrundprüfung wie in der App,
und der Befehl wartet auf sie. Schlägt fehl, wenn nichts geladen werden konnte; scheitern nur
einzelne Repositories, wird das lediglich protokolliert.</translation>
    </message>
</context>
<context>
    <name>CliJobLog</name>
    <message>
        <source>Print the raw log of one Actions job</source>
        <translation>Das unveränderte Log eines Actions-Jobs ausgeben</translation>
    </message>
    <message>
        <source>Prints the log exactly as the server sends it: escape sequences, timestamps and all,
with nothing added, not even a final line break. show lists the jobs and their ids.</source>
        <translation>Gibt das Log genau so aus, wie der Server es sendet, mit Escape-Sequenzen, Zeitstempeln und
allem, ohne jeden Zusatz, nicht einmal einen letzten Zeilenumbruch. show listet die Jobs mit
ihren IDs auf.</translation>
    </message>
</context>
<context>
    <name>CliLogs</name>
    <message>
        <source>Print the diagnostic log, or clear it</source>
        <translation>Das Diagnoseprotokoll ausgeben oder leeren</translation>
    </message>
    <message>
        <source>empty the log, also the stored copy</source>
        <translation>das Protokoll leeren, auch die gespeicherte Kopie</translation>
    </message>
    <message>
        <source>Prints the log as the app shares it, oldest line first:
  [2024-05-01T10:20:30Z] LEVEL message
Every request to the server leaves one line, from the app and from this command alike.</source>
        <extracomment>The log&apos;s lines are in English whatever the language: LEVEL is INFO, WARN or ERROR.</extracomment>
        <translation>Gibt das Protokoll aus, wie die App es teilt, die älteste Zeile zuerst:
  [2024-05-01T10:20:30Z] STUFE Meldung
Jede Anfrage an den Server hinterlässt eine Zeile, aus der App wie aus diesem Befehl.</translation>
    </message>
</context>
<context>
    <name>CliMerge</name>
    <message>
        <source>--method is one of %1</source>
        <translation>--method ist eines von %1</translation>
    </message>
    <message>
        <source>Not merged: confirm with --yes.</source>
        <translation>Nicht gemergt: mit --yes bestätigen.</translation>
    </message>
    <message>
        <source>%1 Merge anyway? [y/N] </source>
        <extracomment>The merge gate&apos;s warning (%1), then the question. Keep the space at the end. Answers in &quot;y&quot; or &quot;yes&quot; merge; a language&apos;s own word for yes is taken as well (see &quot;yes&quot;).</extracomment>
        <translation>%1 Trotzdem mergen? [j/N] </translation>
    </message>
    <message>
        <source>yes</source>
        <comment>answer to a question</comment>
        <extracomment>The word for &quot;yes&quot; typed in answer to &quot;Merge anyway?&quot;, in lower case; &quot;y&quot; and &quot;yes&quot; are always taken too. Its first letter counts as well.</extracomment>
        <translation>ja</translation>
    </message>
    <message>
        <source>Not merged.</source>
        <translation>Nicht gemergt.</translation>
    </message>
    <message>
        <source>Merged %1.</source>
        <translation>%1 gemergt.</translation>
    </message>
    <message>
        <source>Merge a pull request, under the merge gate</source>
        <translation>Einen Pull-Request mergen, unter der Merge-Kontrolle</translation>
    </message>
    <message>
        <source>merge (the default), rebase or squash</source>
        <extracomment>The methods are the values --method takes: they stay as they are.</extracomment>
        <translation>merge (Standard), rebase oder squash</translation>
    </message>
    <message>
        <source>merge while CI is red without asking (warn mode)</source>
        <translation>bei rotem CI ohne Nachfrage mergen (Warnmodus)</translation>
    </message>
    <message>
        <source>Loads the pull request and its workflow runs first. While CI is red (a run failed):
  in block mode the merge is refused;
  in warn mode it is asked for on a terminal, and without one it needs --yes.
A merge refused as out of date brings the branch up to date and is tried once more.
With deleteBranchAfterMerge on, the head branch is deleted. Exits with 1 when not merged.</source>
        <translation>Lädt zuerst den Pull-Request und seine Workflow-Läufe. Solange CI rot ist (ein Lauf ist
fehlgeschlagen):
  im Sperrmodus (block) wird der Merge abgelehnt;
  im Warnmodus (warn) wird im Terminal nachgefragt, ohne Terminal braucht es --yes.
Wird ein Merge als veraltet abgelehnt, wird der Branch aktualisiert und der Merge noch einmal
versucht. Ist deleteBranchAfterMerge an, wird der Head-Branch gelöscht. Endet mit 1, wenn
nicht gemergt wurde.</translation>
    </message>
</context>
<context>
    <name>CliOpen</name>
    <message>
        <source>Cannot open %1: there is no %2 (Debian package xdg-utils) and %3 is not set.</source>
        <translation>%1 kann nicht geöffnet werden: %2 fehlt (Debian-Paket xdg-utils), und %3 ist nicht gesetzt.</translation>
    </message>
    <message>
        <source>Cannot open %1: %2 did not start (%3).</source>
        <translation>%1 kann nicht geöffnet werden: %2 ist nicht gestartet (%3).</translation>
    </message>
    <message>
        <source>Cannot open %1: %2 crashed.</source>
        <translation>%1 kann nicht geöffnet werden: %2 ist abgestürzt.</translation>
    </message>
    <message>
        <source>Cannot open %1: %2 failed (exit status %3).</source>
        <translation>%1 kann nicht geöffnet werden: %2 ist fehlgeschlagen (Exit-Status %3).</translation>
    </message>
    <message>
        <source>Not opening %1: its address on the server is not an http or https address.</source>
        <translation>%1 wird nicht geöffnet: Seine Adresse auf dem Server ist keine http- oder https-Adresse.</translation>
    </message>
    <message>
        <source>Cannot open %1: the server gave no address for its page.</source>
        <translation>%1 kann nicht geöffnet werden: Der Server hat keine Adresse für seine Seite angegeben.</translation>
    </message>
    <message>
        <source>Opening %1</source>
        <translation>Öffne %1</translation>
    </message>
    <message>
        <source>Open a pull request&apos;s page on the server in the browser</source>
        <translation>Die Seite eines Pull-Requests auf dem Server im Browser öffnen</translation>
    </message>
    <message>
        <source>Loads the pull request as its detail screen does, prints the address of its page (the
server&apos;s html_url) and hands it to xdg-open, or, where there is none, to the command in
BROWSER (&quot;%s&quot; in it stands for the address). Waits until that returns.
Only http and https addresses are opened; for any other the command fails.</source>
        <translation>Lädt den Pull-Request wie sein Detailbildschirm, gibt die Adresse seiner Seite aus (die
html_url des Servers) und übergibt sie an xdg-open oder, wo es das nicht gibt, an den Befehl
in BROWSER (&quot;%s&quot; darin steht für die Adresse). Wartet, bis dieser zurückkehrt.
Nur http- und https-Adressen werden geöffnet; bei jeder anderen schlägt der Befehl fehl.</translation>
    </message>
</context>
<context>
    <name>CliPlaceholder</name>
    <message>
        <source>RUN_ID</source>
        <translation>LAUF_ID</translation>
    </message>
    <message>
        <source>TEXT</source>
        <translation>TEXT</translation>
    </message>
    <message>
        <source>NUMBER</source>
        <translation>NUMMER</translation>
    </message>
    <message>
        <source>OWNER/REPO</source>
        <translation>BESITZER/REPO</translation>
    </message>
    <message>
        <source>FILE</source>
        <translation>DATEI</translation>
    </message>
    <message>
        <source>JOB_ID</source>
        <translation>JOB_ID</translation>
    </message>
    <message>
        <source>METHOD</source>
        <translation>METHODE</translation>
    </message>
    <message>
        <source>URL</source>
        <translation>URL</translation>
    </message>
    <message>
        <source>KEY</source>
        <translation>SCHLÜSSEL</translation>
    </message>
    <message>
        <source>VALUE</source>
        <translation>WERT</translation>
    </message>
</context>
<context>
    <name>CliSettings</name>
    <message>
        <source>%1 is true or false</source>
        <translation>%1 ist true oder false</translation>
    </message>
    <message>
        <source>monitoredRepos takes full names such as owner/name</source>
        <translation>monitoredRepos nimmt vollständige Namen wie besitzer/name</translation>
    </message>
    <message>
        <source>%1 is warn or block</source>
        <translation>%1 ist warn oder block</translation>
    </message>
    <message>
        <source>%1 is not a setting that can be changed here</source>
        <translation>%1 ist keine Einstellung, die sich hier ändern lässt</translation>
    </message>
    <message>
        <source>login needs --url with the instance URL</source>
        <translation>login braucht --url mit der Instanz-URL</translation>
    </message>
    <message>
        <source>Token: </source>
        <translation>Token: </translation>
    </message>
    <message>
        <source>no token on standard input</source>
        <translation>kein Token auf der Standardeingabe</translation>
    </message>
    <message>
        <source>the token on standard input is empty</source>
        <translation>das Token auf der Standardeingabe ist leer</translation>
    </message>
    <message>
        <source>--json is for printing the settings</source>
        <translation>--json gibt es nur zum Ausgeben der Einstellungen</translation>
    </message>
    <message>
        <source>settings %1 needs a value</source>
        <translation>settings %1 braucht einen Wert</translation>
    </message>
    <message>
        <source>Store the instance URL and the access token read from standard input</source>
        <translation>Instanz-URL und Zugriffstoken (von der Standardeingabe) speichern</translation>
    </message>
    <message>
        <source>the Gitea instance&apos;s URL</source>
        <translation>die URL der Gitea-Instanz</translation>
    </message>
    <message>
        <source>The token is the first line of standard input (on a terminal it is asked for and not shown);
it is never taken from the command line. Both values go to the keychain, as the app&apos;s
settings screen saves them; nothing is sent to the server.</source>
        <translation>Das Token ist die erste Zeile der Standardeingabe (im Terminal wird danach gefragt, ohne es
anzuzeigen); es wird nie von der Befehlszeile genommen. Beide Werte kommen in den
Schlüsselbund, wie der Einstellungsbildschirm der App sie speichert; an den Server wird nichts
gesendet.</translation>
    </message>
    <message>
        <source>Remove the stored instance URL and token</source>
        <translation>Die gespeicherte Instanz-URL und das Token entfernen</translation>
    </message>
    <message>
        <source>Deletes both from the keychain and stores the default instance URL and an empty token,
as the app&apos;s &quot;Log out&quot; does. The other settings stay.</source>
        <extracomment>&quot;Log out&quot; is the settings screen&apos;s button: say it as the app&apos;s translation does.</extracomment>
        <translation>Löscht beide aus dem Schlüsselbund und speichert die Standard-Instanz-URL und ein leeres Token,
wie es „Abmelden“ in der App tut. Die übrigen Einstellungen bleiben.</translation>
    </message>
    <message>
        <source>Print the settings, or change one</source>
        <translation>Die Einstellungen ausgeben oder eine ändern</translation>
    </message>
    <message>
        <source>print the settings as a JSON object</source>
        <translation>die Einstellungen als JSON-Objekt ausgeben</translation>
    </message>
    <message>
        <source>Without arguments prints every setting but the token, one per line as KEY&lt;TAB&gt;VALUE.
With KEY and VALUE changes one setting and stores it at once:
  mergeGateMode           warn or block (merging while CI is red)
  deleteBranchAfterMerge  true or false
  notificationsEnabled    true or false (the background check)
  monitoredRepos          full names separated by commas, such as ann/tool,cy/infra;
                          empty for every repository
The instance URL and the token are changed with login and logout.</source>
        <extracomment>The keys and the values warn, block, true and false stay as they are.</extracomment>
        <translation>Ohne Argumente wird jede Einstellung außer dem Token ausgegeben, eine pro Zeile als
SCHLÜSSEL&lt;TAB&gt;WERT.
Mit SCHLÜSSEL und WERT wird eine Einstellung geändert und sofort gespeichert:
  mergeGateMode           warn oder block (Mergen bei rotem CI)
  deleteBranchAfterMerge  true oder false
  notificationsEnabled    true oder false (die Hintergrundprüfung)
  monitoredRepos          vollständige Namen, durch Kommas getrennt, wie ann/tool,cy/infra;
                          leer für alle Repositories
Instanz-URL und Token werden mit login und logout geändert.</translation>
    </message>
</context>
<context>
    <name>CliShow</name>
    <message>
        <source>merged</source>
        <comment>pull request state</comment>
        <translation>gemergt</translation>
    </message>
    <message>
        <source>open</source>
        <comment>pull request state</comment>
        <translation>offen</translation>
    </message>
    <message>
        <source>closed</source>
        <comment>pull request state</comment>
        <translation>geschlossen</translation>
    </message>
    <message>
        <source>running</source>
        <comment>CI state</comment>
        <translation>läuft</translation>
    </message>
    <message>
        <source>success</source>
        <comment>CI state</comment>
        <translation>erfolgreich</translation>
    </message>
    <message>
        <source>failure</source>
        <comment>CI state</comment>
        <translation>fehlgeschlagen</translation>
    </message>
    <message>
        <source>cancelled</source>
        <comment>CI state</comment>
        <translation>abgebrochen</translation>
    </message>
    <message>
        <source>unknown</source>
        <comment>CI state</comment>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>CI %1</source>
        <translation>CI %1</translation>
    </message>
    <message>
        <source>Draft</source>
        <comment>a draft pull request</comment>
        <translation>Entwurf</translation>
    </message>
    <message>
        <source>No description.</source>
        <translation>Keine Beschreibung.</translation>
    </message>
    <message>
        <source>Reviews</source>
        <comment>heading</comment>
        <translation>Reviews</translation>
    </message>
    <message>
        <source>Comments</source>
        <comment>heading</comment>
        <translation>Kommentare</translation>
    </message>
    <message>
        <source>No comments yet.</source>
        <translation>Noch keine Kommentare.</translation>
    </message>
    <message>
        <source>Files</source>
        <comment>heading</comment>
        <translation>Dateien</translation>
    </message>
    <message>
        <source>No changed files.</source>
        <translation>Keine geänderten Dateien.</translation>
    </message>
    <message>
        <source>Checks</source>
        <comment>heading</comment>
        <translation>Checks</translation>
    </message>
    <message>
        <source>No workflow runs for this head commit.</source>
        <translation>Keine Workflow-Läufe für diesen Head-Commit.</translation>
    </message>
    <message>
        <source>(run %1)</source>
        <translation>(Lauf %1)</translation>
    </message>
    <message>
        <source>(job %1)</source>
        <translation>(Job %1)</translation>
    </message>
    <message>
        <source>Commit statuses</source>
        <translation>Commit-Status</translation>
    </message>
    <message>
        <source>Print a pull request with its conversation, files and checks</source>
        <translation>Einen Pull-Request mit Diskussion, Dateien und Checks ausgeben</translation>
    </message>
    <message>
        <source>print {pr, ciStatus, reviews, comments, files, commits, runs, jobs, cut} as JSON</source>
        <translation>{pr, ciStatus, reviews, comments, files, commits, runs, jobs, cut} als JSON ausgeben</translation>
    </message>
    <message>
        <source>Loads the pull request as its detail screen does and prints, one block each:
  the title, OWNER/REPO#NUMBER · state · CI summary · review summary, and the
  address of its page on the server (when that is an http or https address);
  the description;
  the reviews and the comments;
  the changed files with their added and removed line counts;
  the workflow runs of the head commit and their jobs, with the ids that rerun and
  job-log take.
Every page of each list is fetched, up to 100 pages; a list cut short there says so.</source>
        <translation>Lädt den Pull-Request wie sein Detailbildschirm und gibt je einen Block aus:
  den Titel, BESITZER/REPO#NUMMER · Zustand · CI-Zusammenfassung · Review-Zusammenfassung
  und die Adresse seiner Seite auf dem Server (wenn das eine http- oder https-Adresse ist);
  die Beschreibung;
  die Reviews und die Kommentare;
  die geänderten Dateien mit der Zahl ihrer hinzugefügten und entfernten Zeilen;
  die Workflow-Läufe des Head-Commits und ihre Jobs, mit den IDs, die rerun und job-log
  erwarten.
Jede Seite jeder Liste wird abgerufen, bis zu 100 Seiten; eine dort gekürzte Liste sagt das.</translation>
    </message>
</context>
<context>
    <name>CommentSheet</name>
    <message>
        <source>Approve</source>
        <comment>sheet title</comment>
        <translation>Genehmigen</translation>
    </message>
    <message>
        <source>Request changes</source>
        <comment>sheet title</comment>
        <translation>Änderungen anfordern</translation>
    </message>
    <message>
        <source>Comment</source>
        <comment>sheet title: write a comment</comment>
        <translation>Kommentar</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Submit</source>
        <translation>Senden</translation>
    </message>
    <message numerus="yes">
        <source>%n character(s)</source>
        <translation>
            <numerusform>%n Zeichen</numerusform>
            <numerusform>%n Zeichen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ConnectionTester</name>
    <message>
        <source>Invalid URL</source>
        <translation>Ungültige URL</translation>
    </message>
</context>
<context>
    <name>ConversationTab</name>
    <message>
        <source>Reviews</source>
        <comment>heading</comment>
        <translation>Reviews</translation>
    </message>
    <message>
        <source>Comments</source>
        <comment>heading</comment>
        <translation>Kommentare</translation>
    </message>
    <message>
        <source>No comments yet.</source>
        <translation>Noch keine Kommentare.</translation>
    </message>
    <message>
        <source>Inline file comments are not shown — the Gitea API does not expose them.</source>
        <translation>Kommentare zu einzelnen Dateizeilen werden nicht angezeigt – die Gitea-API stellt sie nicht bereit.</translation>
    </message>
</context>
<context>
    <name>DemoInstance</name>
    <message>
        <source>The demo data is missing from this build.</source>
        <translation>Die Demodaten fehlen in diesem Build.</translation>
    </message>
    <message>
        <source>The demo data cannot be read: %1</source>
        <translation>Die Demodaten können nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>The demo instance cannot listen on 127.0.0.1.</source>
        <translation>Die Demo-Instanz kann nicht auf 127.0.0.1 lauschen.</translation>
    </message>
    <message>
        <source>The demo needs private storage, and none could be set up.</source>
        <translation>Die Demo braucht einen privaten Speicherort, und es konnte keiner eingerichtet werden.</translation>
    </message>
</context>
<context>
    <name>DetailTabBar</name>
    <message>
        <source>Overview</source>
        <comment>tab</comment>
        <translation>Übersicht</translation>
    </message>
    <message>
        <source>Conversation</source>
        <comment>tab</comment>
        <translation>Diskussion</translation>
    </message>
    <message>
        <source>Files</source>
        <comment>tab</comment>
        <translation>Dateien</translation>
    </message>
    <message>
        <source>Checks</source>
        <comment>tab</comment>
        <translation>Checks</translation>
    </message>
</context>
<context>
    <name>DiffModel</name>
    <message>
        <source>No diff content for this file.</source>
        <translation>Kein Diff-Inhalt für diese Datei.</translation>
    </message>
</context>
<context>
    <name>DiffView</name>
    <message>
        <source>Loading diff…</source>
        <translation>Diff wird geladen…</translation>
    </message>
    <message>
        <source>Couldn&apos;t load diff</source>
        <translation>Diff konnte nicht geladen werden</translation>
    </message>
</context>
<context>
    <name>FilesTab</name>
    <message>
        <source>No changed files.</source>
        <translation>Keine geänderten Dateien.</translation>
    </message>
</context>
<context>
    <name>InboxView</name>
    <message>
        <source>Pull Requests</source>
        <translation>Pull-Requests</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Search pull requests</source>
        <translation>Pull-Requests durchsuchen</translation>
    </message>
    <message>
        <source>Not configured</source>
        <translation>Nicht eingerichtet</translation>
    </message>
    <message>
        <source>Add your Gitea instance and token in Settings.</source>
        <translation>Trage deine Gitea-Instanz und dein Token in den Einstellungen ein.</translation>
    </message>
    <message>
        <source>No open PRs</source>
        <translation>Keine offenen PRs</translation>
    </message>
    <message>
        <source>Pull down to refresh.</source>
        <translation>Zum Aktualisieren nach unten ziehen.</translation>
    </message>
    <message>
        <source>No matches for “%1”</source>
        <translation>Keine Treffer für „%1“</translation>
    </message>
    <message>
        <source>Check the spelling or try other words.</source>
        <translation>Prüfe die Schreibweise oder versuche es mit anderen Wörtern.</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>InboxViewModel</name>
    <message numerus="yes">
        <source>Couldn&apos;t load any PRs (%n repo(s) failed). Check the Logs screen.</source>
        <translation>
            <numerusform>Es konnten keine PRs geladen werden (%n Repository fehlgeschlagen). Sieh im Protokoll nach.</numerusform>
            <numerusform>Es konnten keine PRs geladen werden (%n Repositories fehlgeschlagen). Sieh im Protokoll nach.</numerusform>
        </translation>
    </message>
    <message>
        <source>Configure your Gitea instance in Settings.</source>
        <translation>Richte deine Gitea-Instanz in den Einstellungen ein.</translation>
    </message>
</context>
<context>
    <name>JobLogsView</name>
    <message>
        <source>Share</source>
        <translation>Teilen</translation>
    </message>
    <message>
        <source>Loading logs…</source>
        <translation>Log wird geladen…</translation>
    </message>
    <message>
        <source>Couldn&apos;t load logs</source>
        <translation>Log konnte nicht geladen werden</translation>
    </message>
</context>
<context>
    <name>KestrineApp</name>
    <message>
        <source>Run against the built-in demo instance, without reading or changing your saved settings.</source>
        <translation>Mit der eingebauten Demo-Instanz arbeiten, ohne deine gespeicherten Einstellungen zu lesen oder zu ändern.</translation>
    </message>
    <message>
        <source>The window could not be created.</source>
        <translation>Das Fenster konnte nicht erstellt werden.</translation>
    </message>
    <message>
        <source>Try &apos;kestrine --help&apos; for more information.</source>
        <translation>&apos;kestrine --help&apos; zeigt mehr.</translation>
    </message>
    <message>
        <source>Review and merge the pull requests of a Gitea instance.

Kestrine has one window: started while it runs, it brings that window to the front
instead of opening another, and exits with status 0. The demo is an app of its own
in that respect; it and your own can run side by side.</source>
        <translation>Pull-Requests einer Gitea-Instanz prüfen und mergen.

Kestrine hat ein Fenster: Wird es gestartet, während es läuft, holt es dieses Fenster
in den Vordergrund, statt ein weiteres zu öffnen, und endet mit Status 0. Die Demo ist
darin eine eigene App; sie und deine eigene können nebeneinander laufen.</translation>
    </message>
    <message>
        <source>Show this pull request, such as ann/tool#7, on top of the inbox; when Kestrine already runs, its window shows it.</source>
        <translation>Diesen Pull-Request, etwa ann/tool#7, über dem Posteingang zeigen; läuft Kestrine schon, zeigt ihn dessen Fenster.</translation>
    </message>
    <message>
        <source>--open takes %1, such as ann/tool#7</source>
        <translation>--open erwartet %1, etwa ann/tool#7</translation>
    </message>
    <message>
        <source>Kestrine is already running but could not be brought to the front: %1</source>
        <translation>Kestrine läuft bereits, konnte aber nicht in den Vordergrund geholt werden: %1</translation>
    </message>
</context>
<context>
    <name>ListCut</name>
    <message>
        <source>Showing the first %1 of %2.</source>
        <translation>Die ersten %1 von %2 werden angezeigt.</translation>
    </message>
    <message>
        <source>Showing the first %1.</source>
        <translation>Die ersten %1 werden angezeigt.</translation>
    </message>
</context>
<context>
    <name>LogsView</name>
    <message>
        <source>Logs</source>
        <comment>the diagnostic log</comment>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>Clear</source>
        <comment>empties the log</comment>
        <translation>Leeren</translation>
    </message>
    <message>
        <source>Share</source>
        <translation>Teilen</translation>
    </message>
    <message>
        <source>No logs yet</source>
        <translation>Noch keine Einträge</translation>
    </message>
    <message>
        <source>Run the app and reproduce the issue, then come back here.</source>
        <translation>Nutze die App, bis das Problem wieder auftritt, und komm dann hierher zurück.</translation>
    </message>
</context>
<context>
    <name>MergeGate</name>
    <message>
        <source>CI is red — you can still merge (Settings allows it).</source>
        <translation>CI ist rot – du kannst trotzdem mergen (die Einstellungen erlauben es).</translation>
    </message>
    <message>
        <source>Merging is blocked while CI is red (Settings).</source>
        <translation>Mergen ist gesperrt, solange CI rot ist (Einstellungen).</translation>
    </message>
    <message>
        <source>Create merge commit</source>
        <translation>Merge-Commit erstellen</translation>
    </message>
    <message>
        <source>Rebase and merge</source>
        <translation>Rebasen und mergen</translation>
    </message>
    <message>
        <source>Squash and merge</source>
        <translation>Squashen und mergen</translation>
    </message>
</context>
<context>
    <name>MergeSheet</name>
    <message>
        <source>Merge</source>
        <comment>sheet title</comment>
        <translation>Mergen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Merge</source>
        <comment>button: merge now</comment>
        <translation>Mergen</translation>
    </message>
    <message>
        <source>Merge method</source>
        <translation>Merge-Methode</translation>
    </message>
    <message>
        <source>CI</source>
        <translation>CI</translation>
    </message>
    <message>
        <source>Running</source>
        <comment>CI state</comment>
        <translation>Läuft</translation>
    </message>
    <message>
        <source>Passing</source>
        <comment>CI state</comment>
        <translation>Erfolgreich</translation>
    </message>
    <message>
        <source>Failing</source>
        <comment>CI state</comment>
        <translation>Fehlgeschlagen</translation>
    </message>
    <message>
        <source>Unknown</source>
        <comment>CI state</comment>
        <translation>Unbekannt</translation>
    </message>
</context>
<context>
    <name>MergedOverlay</name>
    <message>
        <source>Merged</source>
        <translation>Gemergt</translation>
    </message>
</context>
<context>
    <name>MonitoredReposView</name>
    <message>
        <source>Monitored repos</source>
        <translation>Beobachtete Repos</translation>
    </message>
    <message>
        <source>Loading repos…</source>
        <translation>Repos werden geladen…</translation>
    </message>
    <message>
        <source>Couldn&apos;t load repos</source>
        <translation>Repos konnten nicht geladen werden</translation>
    </message>
    <message>
        <source>Monitor all repos</source>
        <translation>Alle Repos beobachten</translation>
    </message>
    <message>
        <source>Monitored</source>
        <comment>section of the watched repositories</comment>
        <translation>Beobachtet</translation>
    </message>
</context>
<context>
    <name>NavBar</name>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
</context>
<context>
    <name>NotConfigured</name>
    <message>
        <source>Not configured.</source>
        <translation>Nicht eingerichtet.</translation>
    </message>
</context>
<context>
    <name>NotificationService</name>
    <message>
        <source>New PR</source>
        <translation>Neuer PR</translation>
    </message>
    <message>
        <source>CI running</source>
        <translation>CI läuft</translation>
    </message>
    <message>
        <source>CI passed</source>
        <translation>CI erfolgreich</translation>
    </message>
    <message>
        <source>CI failed</source>
        <translation>CI fehlgeschlagen</translation>
    </message>
    <message>
        <source>CI cancelled</source>
        <translation>CI abgebrochen</translation>
    </message>
    <message>
        <source>CI updated</source>
        <translation>CI aktualisiert</translation>
    </message>
    <message>
        <source>%1 — %2</source>
        <extracomment>A notification&apos;s text: %1 is the pull request&apos;s title, %2 its repository&apos;s full name.</extracomment>
        <translation>%1 — %2</translation>
    </message>
    <message>
        <source>Open</source>
        <comment>opens the notification&apos;s pull request</comment>
        <translation>Öffnen</translation>
    </message>
</context>
<context>
    <name>OverviewTab</name>
    <message>
        <source>No description.</source>
        <translation>Keine Beschreibung.</translation>
    </message>
</context>
<context>
    <name>PRDetailView</name>
    <message>
        <source>Link copied</source>
        <translation>Link kopiert</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Neu laden</translation>
    </message>
    <message>
        <source>Merge</source>
        <comment>action: merge the pull request</comment>
        <translation>Mergen</translation>
    </message>
    <message>
        <source>Review</source>
        <comment>action: review the pull request</comment>
        <translation>Review</translation>
    </message>
    <message>
        <source>Comment</source>
        <comment>menu action: write a comment</comment>
        <translation>Kommentieren</translation>
    </message>
    <message>
        <source>Approve</source>
        <comment>menu action</comment>
        <translation>Genehmigen</translation>
    </message>
    <message>
        <source>Request changes</source>
        <comment>menu action</comment>
        <translation>Änderungen anfordern</translation>
    </message>
    <message>
        <source>Close</source>
        <comment>close the pull request</comment>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Reopen</source>
        <comment>reopen the pull request</comment>
        <translation>Wieder öffnen</translation>
    </message>
    <message>
        <source>Loading…</source>
        <translation>Wird geladen…</translation>
    </message>
    <message>
        <source>Couldn&apos;t load PR</source>
        <translation>PR konnte nicht geladen werden</translation>
    </message>
    <message>
        <source>Opens the pull request in the browser. A long press copies the link.</source>
        <translation>Öffnet den Pull-Request im Browser. Langes Drücken kopiert den Link.</translation>
    </message>
    <message>
        <source>Draft</source>
        <comment>a draft pull request</comment>
        <translation>Entwurf</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Close this PR?</source>
        <translation>Diesen PR schließen?</translation>
    </message>
    <message>
        <source>This will close the pull request.</source>
        <translation>Der Pull-Request wird geschlossen.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Re-run workflow?</source>
        <translation>Workflow neu starten?</translation>
    </message>
    <message>
        <source>Re-run &quot;%1&quot;?</source>
        <translation>„%1“ neu starten?</translation>
    </message>
    <message>
        <source>Re-run</source>
        <comment>re-run the workflow run</comment>
        <translation>Neu starten</translation>
    </message>
</context>
<context>
    <name>PRDetailViewModel</name>
    <message>
        <source>Merging…</source>
        <translation>Wird gemergt…</translation>
    </message>
    <message>
        <source>Updating branch…</source>
        <translation>Branch wird aktualisiert…</translation>
    </message>
    <message>
        <source>Updating…</source>
        <translation>Wird aktualisiert…</translation>
    </message>
    <message>
        <source>Submitting…</source>
        <translation>Wird gesendet…</translation>
    </message>
    <message>
        <source>Posting…</source>
        <translation>Wird veröffentlicht…</translation>
    </message>
    <message>
        <source>Re-running job…</source>
        <translation>Job wird neu gestartet…</translation>
    </message>
</context>
<context>
    <name>PRRowView</name>
    <message>
        <source>Draft</source>
        <comment>a draft pull request</comment>
        <translation>Entwurf</translation>
    </message>
</context>
<context>
    <name>RelativeTime</name>
    <message numerus="yes">
        <source>%n yr. ago</source>
        <translation>
            <numerusform>vor %n J.</numerusform>
            <numerusform>vor %n J.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n yr.</source>
        <translation>
            <numerusform>in %n J.</numerusform>
            <numerusform>in %n J.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n year(s) ago</source>
        <translation>
            <numerusform>vor %n Jahr</numerusform>
            <numerusform>vor %n Jahren</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n year(s)</source>
        <translation>
            <numerusform>in %n Jahr</numerusform>
            <numerusform>in %n Jahren</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n mo. ago</source>
        <translation>
            <numerusform>vor %n Mon.</numerusform>
            <numerusform>vor %n Mon.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n mo.</source>
        <translation>
            <numerusform>in %n Mon.</numerusform>
            <numerusform>in %n Mon.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n month(s) ago</source>
        <translation>
            <numerusform>vor %n Monat</numerusform>
            <numerusform>vor %n Monaten</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n month(s)</source>
        <translation>
            <numerusform>in %n Monat</numerusform>
            <numerusform>in %n Monaten</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n wk. ago</source>
        <translation>
            <numerusform>vor %n Wo.</numerusform>
            <numerusform>vor %n Wo.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n wk.</source>
        <translation>
            <numerusform>in %n Wo.</numerusform>
            <numerusform>in %n Wo.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n week(s) ago</source>
        <translation>
            <numerusform>vor %n Woche</numerusform>
            <numerusform>vor %n Wochen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n week(s)</source>
        <translation>
            <numerusform>in %n Woche</numerusform>
            <numerusform>in %n Wochen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n day(s) ago</source>
        <translation>
            <numerusform>vor %n Tag</numerusform>
            <numerusform>vor %n Tagen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n day(s)</source>
        <translation>
            <numerusform>in %n Tag</numerusform>
            <numerusform>in %n Tagen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n hr. ago</source>
        <translation>
            <numerusform>vor %n Std.</numerusform>
            <numerusform>vor %n Std.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n hr.</source>
        <translation>
            <numerusform>in %n Std.</numerusform>
            <numerusform>in %n Std.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n hour(s) ago</source>
        <translation>
            <numerusform>vor %n Stunde</numerusform>
            <numerusform>vor %n Stunden</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n hour(s)</source>
        <translation>
            <numerusform>in %n Stunde</numerusform>
            <numerusform>in %n Stunden</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n min. ago</source>
        <translation>
            <numerusform>vor %n Min.</numerusform>
            <numerusform>vor %n Min.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n min.</source>
        <translation>
            <numerusform>in %n Min.</numerusform>
            <numerusform>in %n Min.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n minute(s) ago</source>
        <translation>
            <numerusform>vor %n Minute</numerusform>
            <numerusform>vor %n Minuten</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n minute(s)</source>
        <translation>
            <numerusform>in %n Minute</numerusform>
            <numerusform>in %n Minuten</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n sec. ago</source>
        <translation>
            <numerusform>vor %n Sek.</numerusform>
            <numerusform>vor %n Sek.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n sec.</source>
        <translation>
            <numerusform>in %n Sek.</numerusform>
            <numerusform>in %n Sek.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n second(s) ago</source>
        <translation>
            <numerusform>vor %n Sekunde</numerusform>
            <numerusform>vor %n Sekunden</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n second(s)</source>
        <translation>
            <numerusform>in %n Sekunde</numerusform>
            <numerusform>in %n Sekunden</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ReviewState</name>
    <message>
        <source>Approved</source>
        <comment>review badge</comment>
        <translation>Genehmigt</translation>
    </message>
    <message>
        <source>Changes</source>
        <comment>review badge</comment>
        <extracomment>The badge of a pull request whose reviewer requested changes.</extracomment>
        <translation>Änderungen</translation>
    </message>
    <message>
        <source>Needs review</source>
        <comment>review badge</comment>
        <translation>Review nötig</translation>
    </message>
</context>
<context>
    <name>ReviewVerdict</name>
    <message>
        <source>%1 approved</source>
        <translation>%1 hat genehmigt</translation>
    </message>
    <message>
        <source>%1 requested changes</source>
        <translation>%1 hat Änderungen angefordert</translation>
    </message>
    <message>
        <source>%1 reviewed</source>
        <translation>%1 hat ein Review abgegeben</translation>
    </message>
</context>
<context>
    <name>SearchField</name>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Clear search</source>
        <translation>Suche leeren</translation>
    </message>
</context>
<context>
    <name>SettingsStore</name>
    <message>
        <source>Warn on red (allow merge with confirm)</source>
        <translation>Bei Rot warnen (Merge nach Bestätigung erlauben)</translation>
    </message>
    <message>
        <source>Block merge when CI is red</source>
        <translation>Merge bei rotem CI sperren</translation>
    </message>
</context>
<context>
    <name>SettingsView</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>Server</translation>
    </message>
    <message>
        <source>Instance URL</source>
        <translation>Instanz-URL</translation>
    </message>
    <message>
        <source>Personal access token</source>
        <translation>Persönliches Zugriffstoken</translation>
    </message>
    <message>
        <source>Testing…</source>
        <translation>Wird getestet…</translation>
    </message>
    <message>
        <source>Test connection</source>
        <translation>Verbindung testen</translation>
    </message>
    <message>
        <source>Connected as %1</source>
        <translation>Verbunden als %1</translation>
    </message>
    <message>
        <source>Merge gating</source>
        <translation>Merge-Kontrolle</translation>
    </message>
    <message>
        <source>Merge behavior</source>
        <translation>Verhalten beim Mergen</translation>
    </message>
    <message>
        <source>Warn mode shows CI status and allows merging a red PR after confirmation. Block mode disables merge while any check is failing.</source>
        <translation>Im Warnmodus wird der CI-Status angezeigt, und ein roter PR lässt sich nach Bestätigung mergen. Im Sperrmodus ist Mergen nicht möglich, solange ein Check fehlschlägt.</translation>
    </message>
    <message>
        <source>Delete branch after merge</source>
        <translation>Branch nach dem Merge löschen</translation>
    </message>
    <message>
        <source>Inbox</source>
        <translation>Posteingang</translation>
    </message>
    <message>
        <source>Limit the landing page to specific repos to speed it up. Leave empty to monitor all accessible repos.</source>
        <translation>Beschränke die Startseite auf bestimmte Repos, damit sie schneller lädt. Leer lassen, um alle zugänglichen Repos zu beobachten.</translation>
    </message>
    <message>
        <source>Monitored repos</source>
        <translation>Beobachtete Repos</translation>
    </message>
    <message>
        <source>Notifications</source>
        <comment>section heading</comment>
        <translation>Benachrichtigungen</translation>
    </message>
    <message>
        <source>Check periodically for new PRs and CI status changes, then send a local notification. Best-effort: iOS schedules this opportunistically (~15 min) and only when the app was used recently.</source>
        <translation>Regelmäßig nach neuen PRs und Änderungen des CI-Status suchen und dann eine lokale Benachrichtigung senden. Ohne Gewähr: iOS plant das nach eigenem Ermessen (etwa alle 15 Min.) und nur, wenn die App kürzlich benutzt wurde.</translation>
    </message>
    <message>
        <source>Notifications</source>
        <comment>switch</comment>
        <translation>Benachrichtigungen</translation>
    </message>
    <message>
        <source>Diagnostics</source>
        <translation>Diagnose</translation>
    </message>
    <message>
        <source>View logs</source>
        <translation>Protokoll anzeigen</translation>
    </message>
    <message>
        <source>Log out</source>
        <translation>Abmelden</translation>
    </message>
    <message>
        <source>Log out?</source>
        <translation>Abmelden?</translation>
    </message>
</context>
<context>
    <name>ShareService</name>
    <message>
        <source>Cannot write to %1: not a local file</source>
        <translation>In %1 kann nicht geschrieben werden: keine lokale Datei</translation>
    </message>
    <message>
        <source>Cannot write %1: %2</source>
        <translation>%1 kann nicht geschrieben werden: %2</translation>
    </message>
</context>
<context>
    <name>ShareSheet</name>
    <message>
        <source>Copied to the clipboard.</source>
        <translation>In die Zwischenablage kopiert.</translation>
    </message>
    <message>
        <source>Saved.</source>
        <translation>Gespeichert.</translation>
    </message>
    <message>
        <source>Share</source>
        <translation>Teilen</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message numerus="yes">
        <source>%n line(s) · %1 KB</source>
        <translation>
            <numerusform>%n Zeile · %1 KB</numerusform>
            <numerusform>%n Zeilen · %1 KB</numerusform>
        </translation>
    </message>
    <message>
        <source>Copy to clipboard</source>
        <translation>In die Zwischenablage kopieren</translation>
    </message>
    <message>
        <source>Save to file…</source>
        <translation>In Datei speichern…</translation>
    </message>
    <message>
        <source>Save to file</source>
        <translation>In Datei speichern</translation>
    </message>
    <message>
        <source>Text files (*.txt)</source>
        <translation>Textdateien (*.txt)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
</context>
<context>
    <name>Summaries</name>
    <message>
        <source>unknown</source>
        <comment>author</comment>
        <extracomment>Shown instead of the login of a comment&apos;s or review&apos;s author when the server names nobody.</extracomment>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>workflow</source>
        <extracomment>Shown instead of the name of a workflow run that has none.</extracomment>
        <translation>Workflow</translation>
    </message>
</context>
<context>
    <name>TransportError</name>
    <message>
        <source>The HTTP session is gone.</source>
        <translation>Die HTTP-Sitzung besteht nicht mehr.</translation>
    </message>
    <message>
        <source>The request timed out.</source>
        <translation>Zeitüberschreitung bei der Anfrage.</translation>
    </message>
</context>
</TS>
