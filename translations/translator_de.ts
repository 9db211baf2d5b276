<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>CaptionGrid</name>
    <message>
        <source>Page %u of %u</source>
        <translation>Seite %u von %u</translation>
    </message>
</context>
<context>
    <name>app</name>
    <message>
        <source>Cannot save the file</source>
        <translation>Die Datei kann nicht gespeichert werden</translation>
    </message>
    <message>
        <source>%1 rows were left out: they match several dictionary entries or conflict with one, which needs a choice.</source>
        <translation>%1 Zeilen wurden ausgelassen: Sie passen zu mehreren Einträgen des Wörterbuchs oder widersprechen einem, und das verlangt eine Auswahl.</translation>
    </message>
    <message>
        <source>Cannot save the dictionary &apos;%1&apos;.</source>
        <translation>Das Wörterbuch „%1“ kann nicht gespeichert werden.</translation>
    </message>
    <message>
        <source>%1 translation units were left out: they match several dictionary entries or conflict with one, which needs a choice.</source>
        <translation>%1 Übersetzungseinheiten wurden ausgelassen: Sie passen zu mehreren Wörterbucheinträgen oder widersprechen einem, was eine Entscheidung verlangt.</translation>
    </message>
    <message>
        <source>Unknown XLIFF version &apos;%1&apos;: the versions are 1.2 and 2.0.</source>
        <translation>Unbekannte XLIFF-Version „%1“: Die Versionen sind 1.2 und 2.0.</translation>
    </message>
    <message>
        <source>Nothing was exported: &apos;%1&apos; is the file the export reads from. Choose another file name.</source>
        <translation>Es wurde nichts exportiert: „%1“ ist die Datei, aus der exportiert wird. Wählen Sie einen anderen Dateinamen.</translation>
    </message>
</context>
<context>
    <name>campaign</name>
    <message>
        <source>the table &apos;%1&apos; is described twice</source>
        <translation>die Tabelle „%1“ ist zweimal beschrieben</translation>
    </message>
    <message>
        <source>the table &apos;%1&apos; has no column &apos;%2&apos;</source>
        <translation>die Tabelle „%1“ hat keine Spalte „%2“</translation>
    </message>
    <message>
        <source>the relation &apos;%1&apos; names the missing table &apos;%2&apos;</source>
        <translation>die Beziehung „%1“ nennt die fehlende Tabelle „%2“</translation>
    </message>
    <message>
        <source>ADO error %1 - %2 - %3</source>
        <translation>ADO-Fehler %1 - %2 - %3</translation>
    </message>
    <message>
        <source>Unknown error in &apos;%1&apos;</source>
        <translation>Unbekannter Fehler in „%1“</translation>
    </message>
</context>
<context>
    <name>dictionary</name>
    <message>
        <source>Cannot create directory!</source>
        <translation>Der Ordner kann nicht angelegt werden!</translation>
    </message>
    <message>
        <source>The dictionnary is either empty or cannot be found!</source>
        <translation>Das Wörterbuch ist leer oder wurde nicht gefunden!</translation>
    </message>
    <message>
        <source>The dictionary file &apos;%1&apos; could not be read whole; it was kept as &apos;%2&apos; before saving.</source>
        <translation>Die Wörterbuchdatei „%1“ konnte nicht vollständig gelesen werden; sie wurde vor dem Speichern als „%2“ aufbewahrt.</translation>
    </message>
    <message>
        <source>Conflict while adding to the dictionary</source>
        <translation>Konflikt beim Hinzufügen zum Wörterbuch</translation>
    </message>
    <message>
        <source>Please select a line to either create a new entry or merge it with an existing entry</source>
        <translation>Bitte wählen Sie eine Zeile, um entweder einen neuen Eintrag anzulegen oder sie mit einem vorhandenen Eintrag zusammenzuführen</translation>
    </message>
    <message>
        <source>Please select an entry</source>
        <translation>Bitte wählen Sie einen Eintrag</translation>
    </message>
    <message>
        <source>Existing entry no %d</source>
        <translation>Vorhandener Eintrag Nr. %d</translation>
    </message>
    <message>
        <source>New entry</source>
        <translation>Neuer Eintrag</translation>
    </message>
    <message>
        <source>%d entrie(s) have been added to the dictionary</source>
        <translation>Dem Wörterbuch wurden %d Einträge hinzugefügt</translation>
    </message>
    <message>
        <source>%d captions have been translated</source>
        <translation>%d Texte wurden übersetzt</translation>
    </message>
    <message>
        <source>Loading the dictionary</source>
        <translation>Das Wörterbuch wird geladen</translation>
    </message>
    <message>
        <source>Saving the dictionary</source>
        <translation>Das Wörterbuch wird gespeichert</translation>
    </message>
    <message>
        <source>Translating from the dictionary</source>
        <translation>Übersetzen aus dem Wörterbuch</translation>
    </message>
    <message>
        <source>Sending to the dictionary</source>
        <translation>Senden an das Wörterbuch</translation>
    </message>
    <message>
        <source>Cannot write the translation memory &apos;%1&apos;: %2</source>
        <translation>Der Übersetzungsspeicher „%1“ kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>Cannot read the translation memory &apos;%1&apos;: %2</source>
        <translation>Der Übersetzungsspeicher „%1“ kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not a TMX translation memory.</source>
        <translation>„%1“ ist kein TMX-Übersetzungsspeicher.</translation>
    </message>
</context>
<context>
    <name>exchange</name>
    <message>
        <source>Cannot create export file</source>
        <translation>Die Exportdatei kann nicht angelegt werden</translation>
    </message>
    <message>
        <source>Cannot write the file &apos;%1&apos;: %2</source>
        <translation>Die Datei „%1“ kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>Cannot open the file &apos;%1&apos;</source>
        <translation>Die Datei „%1“ kann nicht geöffnet werden</translation>
    </message>
    <message>
        <source>The file &apos;%1&apos; is larger than 1 GiB: a translation file is never that large.</source>
        <translation>Die Datei „%1“ ist größer als 1 GiB: So groß ist eine Übersetzungsdatei nie.</translation>
    </message>
    <message>
        <source>This does not seem to be a translation file</source>
        <translation>Dies scheint keine Übersetzungsdatei zu sein</translation>
    </message>
    <message>
        <source>Language not recognised...</source>
        <translation>Sprache nicht erkannt...</translation>
    </message>
    <message>
        <source>The language &apos;%1&apos; is not defined in the qes file!</source>
        <translation>Die Sprache „%1“ ist in der qes-Datei nicht definiert!</translation>
    </message>
    <message>
        <source>The reference language has not been found in the file! It is not possible to know if a caption has changed!</source>
        <translation>Die Bezugssprache wurde in der Datei nicht gefunden! Es lässt sich nicht feststellen, ob ein Text geändert wurde!</translation>
    </message>
    <message>
        <source>%1 captions have been imported!<byte value="xd"/>
%2 captions had been modified since the export and were ignored. The file &apos;%3&apos; has been created that will need to be retranslated.</source>
        <translation>%1 Texte wurden importiert!<byte value="xd"/>
%2 Texte waren seit dem Export geändert worden und wurden übergangen. Die Datei „%3“ wurde angelegt; sie muss neu übersetzt werden.</translation>
    </message>
    <message>
        <source>%1 captions have been modified!</source>
        <translation>%1 Texte wurden geändert!</translation>
    </message>
    <message>
        <source>%1 captions cannot make the round trip through the export file unchanged: they begin and end with a double quote, hold a backslash followed by n, r or t or a zero character, hold two backslashes in a row in the first language (an import of unchanged captions decodes that column twice), or are longer than 32,767 characters (spreadsheet programs cut such cells). First ones (question id, response id): %2</source>
        <translation>%1 Texte überstehen den Weg durch die Exportdatei nicht unverändert: Sie beginnen und enden mit einem doppelten Anführungszeichen, enthalten einen umgekehrten Schrägstrich gefolgt von n, r oder t oder ein Nullzeichen, enthalten in der ersten Sprache zwei umgekehrte Schrägstriche hintereinander (ein Import nur unveränderter Texte dekodiert diese Spalte zweimal) oder sind länger als 32.767 Zeichen (Tabellenkalkulationen schneiden solche Zellen ab). Die ersten (Fragen-ID, Antwort-ID): %2</translation>
    </message>
    <message>
        <source>Exporting the captions for translation</source>
        <translation>Die Texte werden zur Übersetzung exportiert</translation>
    </message>
    <message>
        <source>Importing the translated file</source>
        <translation>Die übersetzte Datei wird importiert</translation>
    </message>
    <message>
        <source>The import was stopped; the questionnaire is as it was before it.</source>
        <translation>Der Import wurde abgebrochen; der Fragebogen ist so wie vor dem Import.</translation>
    </message>
</context>
<context>
    <name>questionnaire</name>
    <message>
        <source>Campaign databases (.qew) are not supported yet by this version of the program.</source>
        <translation>Kampagnendatenbanken (.qew) werden von dieser Version des Programms noch nicht unterstützt.</translation>
    </message>
    <message>
        <source>The file &apos;%1&apos; has no extension, so it has no working folder to unpack into.</source>
        <translation>Die Datei „%1“ hat keine Endung und damit keinen Arbeitsordner, in den entpackt werden kann.</translation>
    </message>
    <message>
        <source>This version of the program cannot open &apos;%1&apos;.</source>
        <translation>Diese Version des Programms kann „%1“ nicht öffnen.</translation>
    </message>
    <message>
        <source>Cannot write the file &apos;%1&apos;: it is a symbolic link.</source>
        <translation>Die Datei „%1“ kann nicht geschrieben werden: Sie ist ein symbolischer Link.</translation>
    </message>
    <message>
        <source>The saving of &apos;%1&apos; was stopped.</source>
        <translation>Das Speichern von „%1“ wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Cannot write the file &apos;%1&apos;: %2</source>
        <translation>Die Datei „%1“ kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>No working folder was given to unpack the package &apos;%1&apos; into.</source>
        <translation>Es wurde kein Arbeitsordner angegeben, in den das Paket „%1“ entpackt werden kann.</translation>
    </message>
    <message>
        <source>The working folder &apos;%1&apos; does not exist.</source>
        <translation>Der Arbeitsordner „%1“ existiert nicht.</translation>
    </message>
    <message>
        <source>The package &apos;%1&apos; holds a %2 that cannot be read: %3</source>
        <translation>Das Paket „%1“ enthält eine Datei %2, die nicht gelesen werden kann: %3</translation>
    </message>
    <message>
        <source>Cannot save the package &apos;%1&apos;: %2</source>
        <translation>Das Paket „%1“ kann nicht gespeichert werden: %2</translation>
    </message>
    <message>
        <source>The folder &apos;%1&apos; to pack into &apos;%2&apos; does not exist.</source>
        <translation>Der Ordner „%1“, der in „%2“ gepackt werden soll, existiert nicht.</translation>
    </message>
    <message>
        <source>an empty name</source>
        <translation>einem leeren Namen</translation>
    </message>
    <message>
        <source>an absolute name</source>
        <translation>einem absoluten Namen</translation>
    </message>
    <message>
        <source>a &apos;..&apos; path component</source>
        <translation>einem Pfadteil „..“</translation>
    </message>
    <message>
        <source>an empty or &apos;.&apos; path component</source>
        <translation>einem leeren Pfadteil oder einem Pfadteil „.“</translation>
    </message>
    <message>
        <source>The package &apos;%1&apos; holds %2: &apos;%3&apos;. Nothing was unpacked.</source>
        <translation>Das Paket „%1“ enthält %2: „%3“. Es wurde nichts entpackt.</translation>
    </message>
    <message>
        <source>The package &apos;%1&apos; does not exist.</source>
        <translation>Das Paket „%1“ existiert nicht.</translation>
    </message>
    <message>
        <source>The file &apos;%1&apos; cannot be opened as a package: %2.</source>
        <translation>Die Datei „%1“ kann nicht als Paket geöffnet werden: %2.</translation>
    </message>
    <message>
        <source>The package &apos;%1&apos; holds %2 entries, more than the %3 allowed. Nothing was unpacked.</source>
        <translation>Das Paket „%1“ enthält %2 Einträge, mehr als die erlaubten %3. Es wurde nichts entpackt.</translation>
    </message>
    <message>
        <source>an entry without a readable name</source>
        <translation>einen Eintrag ohne lesbaren Namen</translation>
    </message>
    <message>
        <source>an entry with %1</source>
        <translation>einen Eintrag mit %1</translation>
    </message>
    <message>
        <source>an entry that is a symbolic link</source>
        <translation>einen Eintrag, der ein symbolischer Link ist</translation>
    </message>
    <message>
        <source>an entry whose header cannot be read</source>
        <translation>einen Eintrag, dessen Kopf nicht gelesen werden kann</translation>
    </message>
    <message>
        <source>an encrypted entry</source>
        <translation>einen verschlüsselten Eintrag</translation>
    </message>
    <message>
        <source>an entry packed with a method this program cannot read</source>
        <translation>einen Eintrag, der mit einem Verfahren gepackt ist, das dieses Programm nicht lesen kann</translation>
    </message>
    <message>
        <source>an entry of unknown size</source>
        <translation>einen Eintrag unbekannter Größe</translation>
    </message>
    <message>
        <source>an entry declared larger than %1 GiB (%2 bytes)</source>
        <translation>einen Eintrag, der mit mehr als %1 GiB (%2 Bytes) angegeben ist</translation>
    </message>
    <message>
        <source>more than %1 GiB of data in all, reached at the entry</source>
        <translation>mehr als %1 GiB Daten insgesamt, erreicht beim Eintrag</translation>
    </message>
    <message>
        <source>an entry compressed more than %1:1, a likely ZIP bomb</source>
        <translation>einen Eintrag, der stärker als %1:1 komprimiert ist, wahrscheinlich eine ZIP-Bombe</translation>
    </message>
    <message>
        <source>two entries with the same name</source>
        <translation>zwei Einträge mit demselben Namen</translation>
    </message>
    <message>
        <source>an entry that is both a file and a folder</source>
        <translation>einen Eintrag, der zugleich Datei und Ordner ist</translation>
    </message>
    <message>
        <source>The package &apos;%1&apos; holds no %2. Nothing was unpacked.</source>
        <translation>Das Paket „%1“ enthält keine Datei %2. Es wurde nichts entpackt.</translation>
    </message>
    <message>
        <source>Cannot empty the working folder &apos;%1&apos;: &apos;%2&apos; cannot be removed.</source>
        <translation>Der Arbeitsordner „%1“ kann nicht geleert werden: „%2“ lässt sich nicht entfernen.</translation>
    </message>
    <message>
        <source>Unpacking the questionnaire</source>
        <translation>Der Fragebogen wird entpackt</translation>
    </message>
    <message>
        <source>Cannot unpack the package &apos;%1&apos;: &apos;%2&apos; inside the working folder is a symbolic link, and nothing is written through links.</source>
        <translation>Das Paket „%1“ kann nicht entpackt werden: „%2“ im Arbeitsordner ist ein symbolischer Link, und durch Links wird nichts geschrieben.</translation>
    </message>
    <message>
        <source>Cannot create the folder &apos;%1&apos; while unpacking the package &apos;%2&apos;.</source>
        <translation>Der Ordner „%1“ kann beim Entpacken des Pakets „%2“ nicht angelegt werden.</translation>
    </message>
    <message>
        <source>Cannot create the file &apos;%1&apos; while unpacking the package &apos;%2&apos;: %3</source>
        <translation>Die Datei „%1“ kann beim Entpacken des Pakets „%2“ nicht angelegt werden: %3</translation>
    </message>
    <message>
        <source>Cannot read the entry &apos;%1&apos; of the package &apos;%2&apos;: %3</source>
        <translation>Der Eintrag „%1“ des Pakets „%2“ kann nicht gelesen werden: %3</translation>
    </message>
    <message>
        <source>The entry &apos;%1&apos; of the package &apos;%2&apos; holds more bytes than the %3 it declares; unpacking stopped.</source>
        <translation>Der Eintrag „%1“ des Pakets „%2“ enthält mehr Bytes als die angegebenen %3; das Entpacken wurde abgebrochen.</translation>
    </message>
    <message>
        <source>The unpacking of &apos;%1&apos; was stopped.</source>
        <translation>Das Entpacken von „%1“ wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Cannot write the file &apos;%1&apos; while unpacking the package &apos;%2&apos;: %3</source>
        <translation>Die Datei „%1“ kann beim Entpacken des Pakets „%2“ nicht geschrieben werden: %3</translation>
    </message>
    <message>
        <source>Cannot save the package &apos;%1&apos;: no temporary file can be created in &apos;%2&apos;: %3</source>
        <translation>Das Paket „%1“ kann nicht gespeichert werden: In „%2“ kann keine temporäre Datei angelegt werden: %3</translation>
    </message>
    <message>
        <source>Cannot add &apos;%1&apos; to the package &apos;%2&apos;: %3</source>
        <translation>„%1“ kann dem Paket „%2“ nicht hinzugefügt werden: %3</translation>
    </message>
    <message>
        <source>Packing the questionnaire</source>
        <translation>Der Fragebogen wird gepackt</translation>
    </message>
    <message>
        <source>question %1 has an unknown type</source>
        <translation>Frage %1 hat einen unbekannten Typ</translation>
    </message>
    <message>
        <source>question %1 lists versions that are not ids</source>
        <translation>Frage %1 nennt Versionen, die keine IDs sind</translation>
    </message>
    <message>
        <source>a response lists versions that are not ids</source>
        <translation>eine Antwort nennt Versionen, die keine IDs sind</translation>
    </message>
    <message>
        <source>Reading the questions</source>
        <translation>Die Fragen werden gelesen</translation>
    </message>
    <message>
        <source>Reading the responses</source>
        <translation>Die Antworten werden gelesen</translation>
    </message>
    <message>
        <source>the reading was stopped</source>
        <translation>das Lesen wurde abgebrochen</translation>
    </message>
    <message>
        <source>a value of column %1 is not a 32-bit whole number: &apos;%2&apos;</source>
        <translation>ein Wert der Spalte %1 ist keine ganze 32-Bit-Zahl: „%2“</translation>
    </message>
    <message>
        <source>The database is damaged: %1</source>
        <translation>Die Datenbank ist beschädigt: %1</translation>
    </message>
    <message>
        <source>Unknown kind of questionnaire database.</source>
        <translation>Unbekannte Art von Fragebogendatenbank.</translation>
    </message>
    <message>
        <source>The file &apos;%1&apos; cannot be found.</source>
        <translation>Die Datei „%1“ wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>The file &apos;%1&apos; is not a questionnaire database: %2</source>
        <translation>Die Datei „%1“ ist keine Fragebogendatenbank: %2</translation>
    </message>
    <message>
        <source>Cannot read the questionnaire &apos;%1&apos;: %2</source>
        <translation>Der Fragebogen „%1“ kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>%1 rows of &apos;%2&apos; refer to questions, responses or routings that do not exist and were left out.</source>
        <translation>%1 Zeilen von „%2“ verweisen auf Fragen, Antworten oder Filterführungen, die es nicht gibt, und wurden ausgelassen.</translation>
    </message>
    <message>
        <source>&apos;%1&apos; was last saved by an older version of the program.</source>
        <translation>„%1“ wurde zuletzt von einer älteren Version des Programms gespeichert.</translation>
    </message>
    <message>
        <source>the database is not open.</source>
        <translation>die Datenbank ist nicht geöffnet.</translation>
    </message>
    <message>
        <source>no transaction is open.</source>
        <translation>es ist keine Transaktion offen.</translation>
    </message>
    <message>
        <source>The table &apos;%1&apos; is missing: this is not a questionnaire database.</source>
        <translation>Die Tabelle „%1“ fehlt: Dies ist keine Fragebogendatenbank.</translation>
    </message>
    <message>
        <source>The column &apos;%1.%2&apos; is missing or is not of type %3.</source>
        <translation>Die Spalte „%1.%2“ fehlt oder ist nicht vom Typ %3.</translation>
    </message>
    <message>
        <source>The database does not say which format it has.</source>
        <translation>Die Datenbank gibt ihr Format nicht an.</translation>
    </message>
    <message>
        <source>The database names an unknown format.</source>
        <translation>Die Datenbank nennt ein unbekanntes Format.</translation>
    </message>
    <message>
        <source>The database has format %1, written by a newer version of the program; this version reads format %2.</source>
        <translation>Die Datenbank hat das Format %1, geschrieben von einer neueren Version des Programms; diese Version liest das Format %2.</translation>
    </message>
    <message>
        <source>The saving was stopped.</source>
        <translation>Das Speichern wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Writing the questionnaire</source>
        <translation>Der Fragebogen wird geschrieben</translation>
    </message>
    <message>
        <source>Reading the questionnaire</source>
        <translation>Der Fragebogen wird gelesen</translation>
    </message>
    <message>
        <source>The reading was stopped.</source>
        <translation>Das Lesen wurde abgebrochen.</translation>
    </message>
    <message>
        <source>this is not a questionnaire (no &lt;questionnaire&gt; element)</source>
        <translation>dies ist kein Fragebogen (kein Element &lt;questionnaire&gt;)</translation>
    </message>
    <message>
        <source>attribute &apos;%1&apos; is missing</source>
        <translation>das Attribut „%1“ fehlt</translation>
    </message>
    <message>
        <source>attribute &apos;%1&apos; is not a whole number</source>
        <translation>das Attribut „%1“ ist keine ganze Zahl</translation>
    </message>
    <message>
        <source>attribute &apos;%1&apos; is not hexadecimal</source>
        <translation>das Attribut „%1“ ist nicht hexadezimal</translation>
    </message>
    <message>
        <source>&apos;versions&apos; holds something other than ids</source>
        <translation>„versions“ enthält etwas anderes als IDs</translation>
    </message>
    <message>
        <source>attribute &apos;hex&apos; is not hexadecimal</source>
        <translation>das Attribut „hex“ ist nicht hexadezimal</translation>
    </message>
    <message>
        <source>language %1 is listed twice</source>
        <translation>die Sprache %1 ist doppelt aufgeführt</translation>
    </message>
    <message>
        <source>version %1 is listed twice</source>
        <translation>die Version %1 ist doppelt aufgeführt</translation>
    </message>
    <message>
        <source>unknown question type &apos;%1&apos;</source>
        <translation>unbekannter Fragetyp „%1“</translation>
    </message>
    <message>
        <source>question id %1 is used twice</source>
        <translation>die Fragen-ID %1 ist doppelt vergeben</translation>
    </message>
    <message>
        <source>response id %1 is used twice in question %2</source>
        <translation>die Antwort-ID %1 ist in Frage %2 doppelt vergeben</translation>
    </message>
    <message>
        <source>routing id %1 is used twice</source>
        <translation>die Filterführungs-ID %1 ist doppelt vergeben</translation>
    </message>
    <message>
        <source>system message %1 does not exist (2 to 43)</source>
        <translation>die Systemmeldung %1 gibt es nicht (2 bis 43)</translation>
    </message>
    <message>
        <source>Cannot open the file &apos;%1&apos;: %2</source>
        <translation>Die Datei „%1“ kann nicht geöffnet werden: %2</translation>
    </message>
    <message>
        <source>Cannot open the file &apos;%1&apos;</source>
        <translation>Die Datei „%1“ kann nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Cannot read the file &apos;%1&apos;: %2</source>
        <translation>Die Datei „%1“ kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>XML line %1, column %2: %3</source>
        <translation>XML-Zeile %1, Spalte %2: %3</translation>
    </message>
    <message>
        <source>a name was expected</source>
        <translation>ein Name wurde erwartet</translation>
    </message>
    <message>
        <source>&apos;&gt;&apos; was expected after &apos;/&apos;</source>
        <translation>nach „/“ wurde „&gt;“ erwartet</translation>
    </message>
    <message>
        <source>a space was expected between attributes</source>
        <translation>zwischen Attributen wurde ein Leerzeichen erwartet</translation>
    </message>
    <message>
        <source>&apos;=&apos; was expected after an attribute name</source>
        <translation>nach einem Attributnamen wurde „=“ erwartet</translation>
    </message>
    <message>
        <source>an attribute value must be quoted</source>
        <translation>ein Attributwert muss in Anführungszeichen stehen</translation>
    </message>
    <message>
        <source>&apos;&lt;&apos; is not allowed in an attribute value</source>
        <translation>„&lt;“ ist in einem Attributwert nicht erlaubt</translation>
    </message>
    <message>
        <source>the attribute &apos;%1&apos; is given twice</source>
        <translation>das Attribut „%1“ ist doppelt angegeben</translation>
    </message>
    <message>
        <source>the document ends inside a tag</source>
        <translation>das Dokument endet innerhalb eines Tags</translation>
    </message>
    <message>
        <source>&apos;&gt;&apos; was expected to end the tag</source>
        <translation>„&gt;“ wurde als Ende des Tags erwartet</translation>
    </message>
    <message>
        <source>the document ends inside markup</source>
        <translation>das Dokument endet innerhalb von Markup</translation>
    </message>
    <message>
        <source>character data outside the root element</source>
        <translation>Zeichendaten außerhalb des Wurzelelements</translation>
    </message>
    <message>
        <source>document type declarations are not accepted</source>
        <translation>Dokumenttyp-Deklarationen werden nicht angenommen</translation>
    </message>
    <message>
        <source>unknown markup</source>
        <translation>unbekanntes Markup</translation>
    </message>
    <message>
        <source>the character U+%1 is not allowed in XML</source>
        <translation>das Zeichen U+%1 ist in XML nicht erlaubt</translation>
    </message>
    <message>
        <source>text after the root element</source>
        <translation>Text nach dem Wurzelelement</translation>
    </message>
    <message>
        <source>a start tag was expected</source>
        <translation>ein Start-Tag wurde erwartet</translation>
    </message>
    <message>
        <source>a reference outside the root element</source>
        <translation>eine Referenz außerhalb des Wurzelelements</translation>
    </message>
    <message>
        <source>the file could not be read to its end</source>
        <translation>die Datei konnte nicht bis zum Ende gelesen werden</translation>
    </message>
    <message>
        <source>the document ends before its root element does</source>
        <translation>das Dokument endet vor seinem Wurzelelement</translation>
    </message>
    <message>
        <source>the document holds no element</source>
        <translation>das Dokument enthält kein Element</translation>
    </message>
    <message>
        <source>a second root element</source>
        <translation>ein zweites Wurzelelement</translation>
    </message>
    <message>
        <source>an end tag without a start tag</source>
        <translation>ein End-Tag ohne Start-Tag</translation>
    </message>
    <message>
        <source>the end tag &apos;%1&apos; does not match the start tag &apos;%2&apos;</source>
        <translation>das End-Tag „%1“ passt nicht zum Start-Tag „%2“</translation>
    </message>
    <message>
        <source>&apos;&amp;&apos; starts no reference</source>
        <translation>„&amp;“ beginnt keine Referenz</translation>
    </message>
    <message>
        <source>&apos;&amp;%1;&apos; is not a character XML allows</source>
        <translation>„&amp;%1;“ ist kein in XML erlaubtes Zeichen</translation>
    </message>
    <message>
        <source>the entity &apos;%1&apos; is not defined</source>
        <translation>die Entität „%1“ ist nicht definiert</translation>
    </message>
    <message>
        <source>the document ends inside an element</source>
        <translation>das Dokument endet innerhalb eines Elements</translation>
    </message>
    <message>
        <source>a surrogate without its pair</source>
        <translation>ein Surrogat ohne sein Gegenstück</translation>
    </message>
    <message>
        <source>the document ends inside a CDATA section</source>
        <translation>das Dokument endet innerhalb eines CDATA-Abschnitts</translation>
    </message>
    <message>
        <source>an element where only text was expected</source>
        <translation>ein Element, wo nur Text erwartet wurde</translation>
    </message>
    <message>
        <source>Cannot create the file &apos;%1&apos;: %2</source>
        <translation>Die Datei „%1“ kann nicht angelegt werden: %2</translation>
    </message>
    <message>
        <source>The working folder &apos;%1&apos; is a symbolic link, and nothing is unpacked through links.</source>
        <translation>Der Arbeitsordner „%1“ ist eine symbolische Verknüpfung, und durch Verknüpfungen wird nichts entpackt.</translation>
    </message>
    <message>
        <source>question id %1 is below 0</source>
        <translation>die Fragennummer %1 ist kleiner als 0</translation>
    </message>
    <message>
        <source>response id %1 of question %2 is below 0</source>
        <translation>die Antwortnummer %1 der Frage %2 ist kleiner als 0</translation>
    </message>
    <message>
        <source>format %1 was written by a newer version of the program</source>
        <translation>das Format %1 wurde von einer neueren Version des Programms geschrieben</translation>
    </message>
</context>
<context>
    <name>ui</name>
    <message>
        <source>Next Pane</source>
        <translation>Nächster Bereich</translation>
    </message>
    <message>
        <source>Previous Pane</source>
        <translation>Vorheriger Bereich</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>&amp;Open...	Ctrl+O</source>
        <translation>Ö&amp;ffnen...	Ctrl+O</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
    <message>
        <source>&amp;Save	Ctrl+S</source>
        <translation>&amp;Speichern	Ctrl+S</translation>
    </message>
    <message>
        <source>Save &amp;As...</source>
        <translation>Speichern &amp;unter...</translation>
    </message>
    <message>
        <source>Export strings for translation...</source>
        <translation>Texte zur Übersetzung exportieren...</translation>
    </message>
    <message>
        <source>Import from translation...</source>
        <translation>Aus Übersetzung importieren...</translation>
    </message>
    <message>
        <source>&amp;Print...	Ctrl+P</source>
        <translation>&amp;Drucken...	Ctrl+P</translation>
    </message>
    <message>
        <source>Print &amp;Direct</source>
        <translation>D&amp;irekt drucken</translation>
    </message>
    <message>
        <source>Print Pre&amp;view</source>
        <translation>Druck&amp;vorschau</translation>
    </message>
    <message>
        <source>Recent File</source>
        <translation>Zuletzt geöffnete Datei</translation>
    </message>
    <message>
        <source>E&amp;xit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Undo	Ctrl+Z</source>
        <translation>&amp;Rückgängig	Ctrl+Z</translation>
    </message>
    <message>
        <source>Cu&amp;t	Ctrl+X</source>
        <translation>&amp;Ausschneiden	Ctrl+X</translation>
    </message>
    <message>
        <source>&amp;Copy	Ctrl+C</source>
        <translation>&amp;Kopieren	Ctrl+C</translation>
    </message>
    <message>
        <source>&amp;Paste	Ctrl+V</source>
        <translation>&amp;Einfügen	Ctrl+V</translation>
    </message>
    <message>
        <source>Select &amp;All	Ctrl+A</source>
        <translation>Alles &amp;markieren	Ctrl+A</translation>
    </message>
    <message>
        <source>&amp;Toolbar</source>
        <translation>&amp;Symbolleiste</translation>
    </message>
    <message>
        <source>&amp;Status Bar</source>
        <translation>S&amp;tatusleiste</translation>
    </message>
    <message>
        <source>&amp;New Window</source>
        <translation>&amp;Neues Fenster</translation>
    </message>
    <message>
        <source>&amp;Cascade</source>
        <translation>Ü&amp;berlappend</translation>
    </message>
    <message>
        <source>&amp;Tile</source>
        <translation>Nebeneinan&amp;der</translation>
    </message>
    <message>
        <source>&amp;Arrange Icons</source>
        <translation>&amp;Symbole anordnen</translation>
    </message>
    <message>
        <source>Send to dictionary</source>
        <translation>An das Wörterbuch senden</translation>
    </message>
    <message>
        <source>Auto-translate</source>
        <translation>Automatisch übersetzen</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About Translator...</source>
        <translation>&amp;Info über Translator...</translation>
    </message>
    <message>
        <source>Dictionary</source>
        <translation>Wörterbuch</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>About Translator</source>
        <translation>Über Translator</translation>
    </message>
    <message>
        <source>Invalid DateTime</source>
        <translation>Ungültiges Datum</translation>
    </message>
    <message>
        <source>Are you sure you want to delete these entrie(s) ?</source>
        <translation>Möchten Sie diese Einträge wirklich löschen?</translation>
    </message>
    <message>
        <source>Ready</source>
        <translation>Bereit</translation>
    </message>
    <message>
        <source>CAP</source>
        <translation>UF</translation>
    </message>
    <message>
        <source>NUM</source>
        <translation>NUM</translation>
    </message>
    <message>
        <source>SCRL</source>
        <translation>RF</translation>
    </message>
    <message>
        <source>Varnel files (*.qes;*.qex;*.qew;*.xml)</source>
        <translation>Varnel-Dateien (*.qes;*.qex;*.qew;*.xml)</translation>
    </message>
    <message>
        <source>All files (*.*)</source>
        <translation>Alle Dateien (*.*)</translation>
    </message>
    <message>
        <source>Save changes to %1?</source>
        <translation>Änderungen an %1 speichern?</translation>
    </message>
    <message>
        <source>Dictionary has been modified. Do you want to save?</source>
        <translation>Das Wörterbuch wurde geändert. Möchten Sie es speichern?</translation>
    </message>
    <message>
        <source>Cannot print: the printer &apos;%1&apos; could not be opened.</source>
        <translation>Drucken nicht möglich: Der Drucker „%1“ konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>Translator cannot open its window: no display could be reached%1. Run it in a desktop session, or give it a batch operation (translator --help).</source>
        <translation>Translator kann sein Fenster nicht öffnen: Es ist keine Anzeige erreichbar%1. Starten Sie es in einer Desktop-Sitzung, oder geben Sie ihm eine Stapeloperation (translator --help).</translation>
    </message>
    <message>
        <source>Open from Se&amp;rver...</source>
        <translation>Vom Se&amp;rver öffnen...</translation>
    </message>
    <message>
        <source>Save to Ser&amp;ver...</source>
        <translation>Auf dem Server s&amp;peichern...</translation>
    </message>
    <message>
        <source>Campaign database on a PostgreSQL server
(postgresql://user@host:port/database):</source>
        <translation>Kampagnendatenbank auf einem PostgreSQL-Server
(postgresql://benutzer@host:port/datenbank):</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not a server location: it begins with postgresql://.</source>
        <translation>„%1“ ist keine Serveradresse: Sie beginnt mit postgresql://.</translation>
    </message>
    <message>
        <source>The database &apos;%1&apos; already holds a campaign.
Do you want to replace it?</source>
        <translation>Die Datenbank &apos;%1&apos; enthält bereits eine Kampagne.
Möchten Sie sie ersetzen?</translation>
    </message>
</context>
<context>
    <name>ui::dialogs</name>
    <message>
        <source>All versions</source>
        <translation>Alle Versionen</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Text files (*.txt)</source>
        <translation>Textdateien (*.txt)</translation>
    </message>
    <message>
        <source>All files (*.*)</source>
        <translation>Alle Dateien (*.*)</translation>
    </message>
    <message>
        <source>Export languages you want to export</source>
        <translation>Export: die Sprachen, die Sie exportieren möchten</translation>
    </message>
    <message>
        <source>Output file:</source>
        <translation>Ausgabedatei:</translation>
    </message>
    <message>
        <source>Versions:</source>
        <translation>Versionen:</translation>
    </message>
    <message>
        <source>Exclude already translated captions</source>
        <translation>Bereits übersetzte Texte auslassen</translation>
    </message>
    <message>
        <source>Exclude duplicated captions</source>
        <translation>Doppelte Texte auslassen</translation>
    </message>
    <message>
        <source>Exclude non visible questions</source>
        <translation>Nicht sichtbare Fragen auslassen</translation>
    </message>
    <message>
        <source>Exclude system messages</source>
        <translation>Systemmeldungen auslassen</translation>
    </message>
    <message>
        <source>Exclude routings</source>
        <translation>Filterführungen auslassen</translation>
    </message>
    <message>
        <source>Exclude question long captions</source>
        <translation>Langtexte der Fragen auslassen</translation>
    </message>
    <message>
        <source>Exclude question short captions</source>
        <translation>Kurztexte der Fragen auslassen</translation>
    </message>
    <message>
        <source>Exclude instructions</source>
        <translation>Anweisungen auslassen</translation>
    </message>
    <message>
        <source>Exclude comments</source>
        <translation>Kommentare auslassen</translation>
    </message>
    <message>
        <source>Exclude responses</source>
        <translation>Antworten auslassen</translation>
    </message>
    <message>
        <source>Show shortcuts and entry-codes</source>
        <translation>Kürzel und Eingabecodes anzeigen</translation>
    </message>
    <message>
        <source>Order of languages</source>
        <translation>Reihenfolge der Sprachen</translation>
    </message>
    <message>
        <source>Abbreviation</source>
        <translation>Abkürzung</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Sprache</translation>
    </message>
    <message>
        <source>Please select an output file!</source>
        <translation>Bitte wählen Sie eine Ausgabedatei!</translation>
    </message>
    <message>
        <source>Please select at least 2 languages</source>
        <translation>Bitte wählen Sie mindestens 2 Sprachen</translation>
    </message>
    <message>
        <source>Import file</source>
        <translation>Datei importieren</translation>
    </message>
    <message>
        <source>Translated file:</source>
        <translation>Übersetzte Datei:</translation>
    </message>
    <message>
        <source>Only import unchanged captions since the export</source>
        <translation>Nur seit dem Export unveränderte Texte importieren</translation>
    </message>
    <message>
        <source>Copy over identical strings</source>
        <translation>Auf gleiche Texte übertragen</translation>
    </message>
    <message>
        <source>Reference language:</source>
        <translation>Bezugssprache:</translation>
    </message>
    <message>
        <source>%1 - %2</source>
        <translation>%1 - %2</translation>
    </message>
    <message>
        <source>XLIFF files (*.xlf *.xliff)</source>
        <translation>XLIFF-Dateien (*.xlf *.xliff)</translation>
    </message>
    <message>
        <source>Translation files (*.txt *.xlf *.xliff)</source>
        <translation>Übersetzungsdateien (*.txt *.xlf *.xliff)</translation>
    </message>
    <message>
        <source>Format:</source>
        <translation>Format:</translation>
    </message>
    <message>
        <source>Tab-separated text, for spreadsheets (.txt)</source>
        <translation>Text mit Tabulatoren, für Tabellenkalkulationen (.txt)</translation>
    </message>
    <message>
        <source>XLIFF 1.2, for translation tools (.xlf)</source>
        <translation>XLIFF 1.2, für Übersetzungswerkzeuge (.xlf)</translation>
    </message>
    <message>
        <source>XLIFF 2.0, for translation tools (.xlf)</source>
        <translation>XLIFF 2.0, für Übersetzungswerkzeuge (.xlf)</translation>
    </message>
</context>
<context>
    <name>util</name>
    <message>
        <source>The database driver %1 is not installed.</source>
        <translation>Der Datenbanktreiber %1 ist nicht installiert.</translation>
    </message>
    <message>
        <source>The file &apos;%1&apos; cannot be found.</source>
        <translation>Die Datei „%1“ wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>No transaction is open.</source>
        <translation>Es ist keine Transaktion offen.</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is a folder, not a file.</source>
        <translation>„%1“ ist ein Ordner, keine Datei.</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not an ordinary file and cannot be replaced.</source>
        <translation>„%1“ ist keine gewöhnliche Datei und kann nicht ersetzt werden.</translation>
    </message>
    <message>
        <source>You do not have permission to change the file &apos;%1&apos;.</source>
        <translation>Sie haben keine Berechtigung, die Datei „%1“ zu ändern.</translation>
    </message>
</context>
</TS>
