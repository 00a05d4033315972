<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>ImportFiles</name>
    <message>
        <source>Import List</source>
        <translation>Liste importieren</translation>
    </message>
    <message>
        <source>Reads the paths from a text file, one a line</source>
        <translation>Liest die Pfade aus einer Textdatei, einen je Zeile</translation>
    </message>
    <message>
        <source>From File</source>
        <translation>Aus Datei</translation>
    </message>
    <message>
        <source>Text file</source>
        <translation>Textdatei</translation>
    </message>
    <message>
        <source>Text file with one path a line</source>
        <translation>Textdatei mit einem Pfad je Zeile</translation>
    </message>
    <message>
        <source>Chooses the text file</source>
        <translation>Wählt die Textdatei</translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation>Durchsuchen...</translation>
    </message>
    <message>
        <source>Takes the paths from the text below, one a line</source>
        <translation>Nimmt die Pfade aus dem Text unten, einen je Zeile</translation>
    </message>
    <message>
        <source>From Text</source>
        <translation>Aus Text</translation>
    </message>
    <message>
        <source>Replaces the text by the TIFF files that the clipboard lists</source>
        <translation>Ersetzt den Text durch die TIFF-Dateien, die die Zwischenablage nennt</translation>
    </message>
    <message>
        <source>Paste from Clipboard</source>
        <translation>Aus der Zwischenablage einfügen</translation>
    </message>
    <message>
        <source>Paths</source>
        <translation>Pfade</translation>
    </message>
    <message>
        <source>One path a line</source>
        <translation>Ein Pfad je Zeile</translation>
    </message>
    <message>
        <source>Total Files Found : 0</source>
        <translation>Gefundene Dateien: 0</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Adds the files found to the list</source>
        <translation>Nimmt die gefundenen Dateien in die Liste auf</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Importieren</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Takes the highlighted rows off the list; no file is deleted</source>
        <translation>Nimmt die markierten Zeilen aus der Liste; keine Datei wird gelöscht</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Opens the highlighted files</source>
        <translation>Öffnet die markierten Dateien</translation>
    </message>
    <message>
        <source>Open File</source>
        <translation>Datei öffnen</translation>
    </message>
    <message>
        <source>Shows the highlighted files in the file manager</source>
        <translation>Zeigt die markierten Dateien in der Dateiverwaltung</translation>
    </message>
    <message>
        <source>Show in Folder</source>
        <translation>Im Ordner zeigen</translation>
    </message>
    <message>
        <source>Shows what the file manager knows of the highlighted files</source>
        <translation>Zeigt, was die Dateiverwaltung über die markierten Dateien weiß</translation>
    </message>
    <message>
        <source>File Information</source>
        <translation>Dateiinformation</translation>
    </message>
    <message>
        <source>Highlights every row</source>
        <translation>Markiert jede Zeile</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alles markieren</translation>
    </message>
    <message>
        <source>Highlights the first row alone</source>
        <translation>Markiert nur die erste Zeile</translation>
    </message>
    <message>
        <source>Deselect All</source>
        <translation>Markierung aufheben</translation>
    </message>
    <message>
        <source>Moves the highlighted rows up</source>
        <translation>Bewegt die markierten Zeilen nach oben</translation>
    </message>
    <message>
        <source>Move Up</source>
        <translation>Nach oben</translation>
    </message>
    <message>
        <source>Moves the highlighted rows down</source>
        <translation>Bewegt die markierten Zeilen nach unten</translation>
    </message>
    <message>
        <source>Move Down</source>
        <translation>Nach unten</translation>
    </message>
    <message>
        <source>Remove Highlighted Files</source>
        <translation>Markierte Dateien entfernen</translation>
    </message>
    <message>
        <source>Empties the list; no file is deleted</source>
        <translation>Leert die Liste; keine Datei wird gelöscht</translation>
    </message>
    <message>
        <source>Remove All Files</source>
        <translation>Alle Dateien entfernen</translation>
    </message>
    <message>
        <source>Finds files by name</source>
        <translation>Findet Dateien nach dem Namen</translation>
    </message>
    <message>
        <source>Find</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Find:</source>
        <translation>Suchen:</translation>
    </message>
    <message>
        <source>Highlights the files with this in their names; with a slash, in their paths. What is converted stays as it is.</source>
        <translation>Markiert die Dateien, in deren Namen das steht; mit Schrägstrich, in deren Pfaden. Was umgewandelt wird, bleibt wie es ist.</translation>
    </message>
    <message>
        <source>Find files by name</source>
        <translation>Dateien nach dem Namen suchen</translation>
    </message>
    <message>
        <source>Part of a file name</source>
        <translation>Teil eines Dateinamens</translation>
    </message>
    <message>
        <source>Previous</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Dateien</translation>
    </message>
    <message>
        <source>Files to convert; tick those to convert</source>
        <translation>Dateien der Liste; die angehakten werden umgewandelt</translation>
    </message>
    <message>
        <source>Drag TIFF files and folders here</source>
        <translation>TIFF-Dateien und Ordner hierher ziehen</translation>
    </message>
    <message>
        <source>0 Total file(s); 0 file selected; Total page count of selected TIFF file(s): 0</source>
        <translation>0 Dateien; 0 angehakt; Seiten der angehakten: 0</translation>
    </message>
    <message>
        <source>Total Pages TIFF : 0</source>
        <translation>Seiten aller TIFF-Dateien: 0</translation>
    </message>
    <message>
        <source>Total Time Taken : 0 sec(s) 0/0</source>
        <translation>Gebrauchte Zeit: 0 Sek. 0/0</translation>
    </message>
    <message>
        <source>Loading files</source>
        <translation>Dateien werden geladen</translation>
    </message>
    <message>
        <source>Stops adding files</source>
        <translation>Beendet das Hinzufügen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Converts the pages of the ticked files</source>
        <translation>Wandelt die Seiten der angehakten Dateien um</translation>
    </message>
    <message>
        <source>Convert Files</source>
        <translation>Dateien umwandeln</translation>
    </message>
    <message>
        <source>Fil&amp;e</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>Recent Fo&amp;lders</source>
        <translation>&amp;Zuletzt benutzte Ordner</translation>
    </message>
    <message>
        <source>Edi&amp;t</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>Window</source>
        <translation>Fenster</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Toolbar</source>
        <translation>Werkzeugleiste</translation>
    </message>
    <message>
        <source>Adds TIFF files to the list</source>
        <translation>Nimmt TIFF-Dateien in die Liste auf</translation>
    </message>
    <message>
        <source>Add Files...</source>
        <translation>Dateien hinzufügen...</translation>
    </message>
    <message>
        <source>Adds the TIFF files of folders to the list</source>
        <translation>Nimmt die TIFF-Dateien von Ordnern in die Liste auf</translation>
    </message>
    <message>
        <source>Add Folder...</source>
        <translation>Ordner hinzufügen...</translation>
    </message>
    <message>
        <source>Takes the files of sub-folders too when a folder is added or dropped</source>
        <translation>Nimmt auch die Dateien der Unterordner, wenn ein Ordner kommt</translation>
    </message>
    <message>
        <source>Include sub-folders</source>
        <translation>Mit Unterordnern</translation>
    </message>
    <message>
        <source>Adds the files that a list of paths names</source>
        <translation>Nimmt die Dateien auf, die eine Liste von Pfaden nennt</translation>
    </message>
    <message>
        <source>Import List...</source>
        <translation>Liste importieren...</translation>
    </message>
    <message>
        <source>Export List</source>
        <translation>Liste exportieren</translation>
    </message>
    <message>
        <source>Saves the list as text</source>
        <translation>Sichert die Liste als Text</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Shows or hides the settings</source>
        <translation>Zeigt oder verbirgt die Einstellungen</translation>
    </message>
    <message>
        <source>No Settings</source>
        <translation>Keine Einstellungen</translation>
    </message>
    <message>
        <source>Add &amp;Files...</source>
        <translation>Dateien &amp;hinzufügen...</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>Add F&amp;older...</source>
        <translation>&amp;Ordner hinzufügen...</translation>
    </message>
    <message>
        <source>Ctrl+Shift+O</source>
        <translation>Ctrl+Shift+O</translation>
    </message>
    <message>
        <source>&amp;Import List...</source>
        <translation>Liste &amp;importieren...</translation>
    </message>
    <message>
        <source>Ctrl+I</source>
        <translation>Ctrl+I</translation>
    </message>
    <message>
        <source>&amp;Export List...</source>
        <translation>Liste &amp;exportieren...</translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation>Ctrl+E</translation>
    </message>
    <message>
        <source>Convert File&amp;s</source>
        <translation>Dateien &amp;umwandeln</translation>
    </message>
    <message>
        <source>Ctrl+Return</source>
        <translation>Ctrl+Return</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>Quit Pagestack</source>
        <translation>Pagestack beenden</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>About Pagestack</source>
        <translation>Über Pagestack</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>Ctrl+Z</source>
        <translation>Ctrl+Z</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>Ctrl+Shift+Z</source>
        <translation>Ctrl+Shift+Z</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>&amp;Alles markieren</translation>
    </message>
    <message>
        <source>Ctrl+A</source>
        <translation>Ctrl+A</translation>
    </message>
    <message>
        <source>&amp;Deselect All</source>
        <translation>&amp;Markierung aufheben</translation>
    </message>
    <message>
        <source>Ctrl+Shift+A</source>
        <translation>Ctrl+Shift+A</translation>
    </message>
    <message>
        <source>&amp;Tick All</source>
        <translation>A&amp;lle anhaken</translation>
    </message>
    <message>
        <source>Ctrl+T</source>
        <translation>Ctrl+T</translation>
    </message>
    <message>
        <source>U&amp;ntick All</source>
        <translation>&amp;Keine anhaken</translation>
    </message>
    <message>
        <source>Ctrl+Shift+T</source>
        <translation>Ctrl+Shift+T</translation>
    </message>
    <message>
        <source>&amp;Invert Ticks</source>
        <translation>Haken &amp;umkehren</translation>
    </message>
    <message>
        <source>Ctrl+Shift+I</source>
        <translation>Ctrl+Shift+I</translation>
    </message>
    <message>
        <source>Ti&amp;ck Highlighted Files</source>
        <translation>Markierte an&amp;haken</translation>
    </message>
    <message>
        <source>Untic&amp;k Highlighted Files</source>
        <translation>Haken der Markierten en&amp;tfernen</translation>
    </message>
    <message>
        <source>In&amp;vert Ticks of Highlighted Files</source>
        <translation>Haken &amp;der Markierten umkehren</translation>
    </message>
    <message>
        <source>Re&amp;move Highlighted Files</source>
        <translation>Markierte &amp;entfernen</translation>
    </message>
    <message>
        <source>Remove A&amp;ll Files</source>
        <translation>Alle Dateien ent&amp;fernen</translation>
    </message>
    <message>
        <source>O&amp;pen File</source>
        <translation>Datei ö&amp;ffnen</translation>
    </message>
    <message>
        <source>Sho&amp;w in Folder</source>
        <translation>Im Ordner zei&amp;gen</translation>
    </message>
    <message>
        <source>Ctrl+R</source>
        <translation>Ctrl+R</translation>
    </message>
    <message>
        <source>File I&amp;nformation</source>
        <translation>Dateii&amp;nformation</translation>
    </message>
    <message>
        <source>Alt+Return</source>
        <translation>Alt+Return</translation>
    </message>
    <message>
        <source>&amp;Find...</source>
        <translation>&amp;Suchen...</translation>
    </message>
    <message>
        <source>Ctrl+F</source>
        <translation>Ctrl+F</translation>
    </message>
    <message>
        <source>&amp;Show Settings</source>
        <translation>&amp;Einstellungen zeigen</translation>
    </message>
    <message>
        <source>Ctrl+,</source>
        <translation>Ctrl+,</translation>
    </message>
    <message>
        <source>&amp;Minimize</source>
        <translation>&amp;Verkleinern</translation>
    </message>
    <message>
        <source>Ctrl+M</source>
        <translation>Ctrl+M</translation>
    </message>
    <message>
        <source>Pagestack Window</source>
        <translation>Pagestack-Fenster</translation>
    </message>
    <message>
        <source>Ctrl+0</source>
        <translation>Ctrl+0</translation>
    </message>
    <message>
        <source>Pagestack Help</source>
        <translation>Pagestack-Hilfe</translation>
    </message>
    <message>
        <source>F1</source>
        <translation>F1</translation>
    </message>
    <message>
        <source>Pagestack on the Web</source>
        <translation>Pagestack im Web</translation>
    </message>
    <message>
        <source>Shows only the files with these words in their names; with a slash, in their paths. Also pages&gt;5, size&lt;2MB, type=tiff; a minus before a word leaves its files out. Escape shows all.</source>
        <translation>Zeigt nur die Dateien mit diesen Wörtern im Namen; mit Schrägstrich, im Pfad. Auch pages&gt;5, size&lt;2MB, type=tiff; ein Minus vor einem Wort lässt seine Dateien weg. Esc zeigt alle.</translation>
    </message>
    <message>
        <source>Filter the files</source>
        <translation>Dateien filtern</translation>
    </message>
    <message>
        <source>Filter: name or pages&gt;5</source>
        <translation>Filter: Name oder pages&gt;5</translation>
    </message>
    <message>
        <source>Shows all files</source>
        <translation>Zeigt alle Dateien</translation>
    </message>
    <message>
        <source>All</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>Shows only the files that failed, are missing or cannot be read</source>
        <translation>Zeigt nur Dateien, die misslangen, fehlen oder unlesbar sind</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Misslungen</translation>
    </message>
    <message>
        <source>Shows only the files with warnings</source>
        <translation>Zeigt nur Dateien mit Warnungen</translation>
    </message>
    <message>
        <source>Warnings</source>
        <translation>Warnungen</translation>
    </message>
    <message>
        <source>Shows only the files that the last run did not come to</source>
        <translation>Zeigt nur Dateien, zu denen der letzte Lauf nicht kam</translation>
    </message>
    <message>
        <source>Not reached</source>
        <translation>Nicht erreicht</translation>
    </message>
    <message>
        <source>&amp;Appearance</source>
        <translation>E&amp;rscheinungsbild</translation>
    </message>
    <message>
        <source>Columns</source>
        <translation>Spalten</translation>
    </message>
    <message>
        <source>As the &amp;System</source>
        <translation>Wie das &amp;System</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>&amp;Hell</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>&amp;Dunkel</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>Ctrl+X</source>
        <translation>Ctrl+X</translation>
    </message>
    <message>
        <source>Cop&amp;y Paths</source>
        <translation>&amp;Pfade kopieren</translation>
    </message>
    <message>
        <source>Ctrl+C</source>
        <translation>Ctrl+C</translation>
    </message>
    <message>
        <source>Paste Pat&amp;hs</source>
        <translation>Pfade einfü&amp;gen</translation>
    </message>
    <message>
        <source>Ctrl+V</source>
        <translation>Ctrl+V</translation>
    </message>
    <message>
        <source>Tick Failed Only</source>
        <translation>Nur misslungene anhaken</translation>
    </message>
    <message>
        <source>Remove Converted Files</source>
        <translation>Umgewandelte Dateien entfernen</translation>
    </message>
    <message>
        <source>&amp;Filter</source>
        <translation>F&amp;ilter</translation>
    </message>
    <message>
        <source>Ctrl+L</source>
        <translation>Ctrl+L</translation>
    </message>
    <message>
        <source>M&amp;ove Up</source>
        <translation>Nach &amp;oben</translation>
    </message>
    <message>
        <source>Mov&amp;e Down</source>
        <translation>Nach unte&amp;n</translation>
    </message>
    <message>
        <source>Preference&amp;s</source>
        <translation>&amp;Voreinstellungen</translation>
    </message>
    <message>
        <source>&amp;Preview</source>
        <translation>&amp;Vorschau</translation>
    </message>
    <message>
        <source>F3</source>
        <translation>F3</translation>
    </message>
    <message>
        <source>F9</source>
        <translation>F9</translation>
    </message>
    <message>
        <source>&amp;Thumbnails in the List</source>
        <translation>Vorschau&amp;bilder in der Liste</translation>
    </message>
</context>
<context>
    <name>PageFactsText</name>
    <message>
        <source>black and white</source>
        <translation>schwarz-weiß</translation>
    </message>
    <message>
        <source>gray</source>
        <translation>grau</translation>
    </message>
    <message>
        <source>gray, 0 is white</source>
        <translation>grau, 0 ist weiß</translation>
    </message>
    <message>
        <source>palette</source>
        <translation>Palette</translation>
    </message>
    <message>
        <source>mask</source>
        <translation>Maske</translation>
    </message>
    <message>
        <source>%1 x %2 cm (%3 x %4 inches)</source>
        <translation>%1 x %2 cm (%3 x %4 Zoll)</translation>
    </message>
    <message>
        <source>%1 dpi</source>
        <translation>%1 dpi</translation>
    </message>
    <message>
        <source>%1 x %2 dpi</source>
        <translation>%1 x %2 dpi</translation>
    </message>
    <message>
        <source>1 bit a pixel</source>
        <translation>1 Bit je Pixel</translation>
    </message>
    <message>
        <source>%1 bits a pixel</source>
        <translation>%1 Bit je Pixel</translation>
    </message>
    <message>
        <source>%1 samples of %2 bits</source>
        <translation>%1 Werte von %2 Bit</translation>
    </message>
    <message>
        <source>%1 x %2 pixels</source>
        <translation>%1 x %2 Pixel</translation>
    </message>
    <message>
        <source>Not compressed</source>
        <translation>Nicht komprimiert</translation>
    </message>
    <message>
        <source>Compression: %1</source>
        <translation>Kompression: %1</translation>
    </message>
    <message>
        <source>Profile: %1</source>
        <translation>Profil: %1</translation>
    </message>
    <message>
        <source>Also: %1</source>
        <translation>Auch: %1</translation>
    </message>
</context>
<context>
    <name>PreviewControls</name>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>Facts of the page</source>
        <translation>Angaben zur Seite</translation>
    </message>
    <message>
        <source>Compare</source>
        <translation>Vergleichen</translation>
    </message>
    <message>
        <source>Shows what the page becomes by the present settings, and how large its file is</source>
        <translation>Zeigt, was mit den jetzigen Einstellungen aus der Seite wird, und wie groß ihre Datei ist</translation>
    </message>
    <message>
        <source>Previous page</source>
        <translation>Vorige Seite</translation>
    </message>
    <message>
        <source>Page</source>
        <translation>Seite</translation>
    </message>
    <message>
        <source>Next page</source>
        <translation>Nächste Seite</translation>
    </message>
    <message>
        <source>Fit</source>
        <translation>Ganz</translation>
    </message>
    <message>
        <source>Shows the whole page (0)</source>
        <translation>Zeigt die ganze Seite (0)</translation>
    </message>
    <message>
        <source>100 %</source>
        <translation>100 %</translation>
    </message>
    <message>
        <source>Shows the pixels as they are (1)</source>
        <translation>Zeigt die Pixel, wie sie sind (1)</translation>
    </message>
    <message>
        <source>Shows more (-)</source>
        <translation>Verkleinert (-)</translation>
    </message>
    <message>
        <source>Enlarges (+)</source>
        <translation>Vergrößert (+)</translation>
    </message>
    <message>
        <source>Original</source>
        <translation>Original</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
</context>
<context>
    <name>ProcessPanel</name>
    <message>
        <source>Converting</source>
        <translation>Umwandlung</translation>
    </message>
    <message>
        <source>File:</source>
        <translation>Datei:</translation>
    </message>
    <message>
        <source>Image:</source>
        <translation>Bild:</translation>
    </message>
    <message>
        <source>Images:</source>
        <translation>Bilder:</translation>
    </message>
    <message>
        <source>Time:</source>
        <translation>Zeit:</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Problems</source>
        <translation>Probleme</translation>
    </message>
    <message>
        <source>Double click: shows the file in the list</source>
        <translation>Doppelklick zeigt die Datei in der Liste</translation>
    </message>
    <message>
        <source>Opens the log of this conversion</source>
        <translation>Öffnet das Protokoll dieser Umwandlung</translation>
    </message>
    <message>
        <source>View Log</source>
        <translation>Protokoll ansehen</translation>
    </message>
    <message>
        <source>Shows what went wrong with which file and page</source>
        <translation>Zeigt, was bei welcher Datei und Seite misslang</translation>
    </message>
    <message>
        <source>Show &amp;Problems</source>
        <translation>&amp;Probleme zeigen</translation>
    </message>
    <message>
        <source>Opens the folder of the images</source>
        <translation>Öffnet den Ordner der Bilder</translation>
    </message>
    <message>
        <source>Show in Folder</source>
        <translation>Im Ordner zeigen</translation>
    </message>
    <message>
        <source>Closes, with a tick at the files only that were not converted</source>
        <translation>Schließt; nur was nicht umgewandelt wurde, bleibt angehakt</translation>
    </message>
    <message>
        <source>Tick Failed Only</source>
        <translation>Nur misslungene anhaken</translation>
    </message>
    <message>
        <source>Shows the list of files; the conversion goes on at the bottom of the window</source>
        <translation>Zeigt die Liste; die Umwandlung geht am unteren Rand des Fensters weiter</translation>
    </message>
    <message>
        <source>Hide Details</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Holds the run up after the page in hand, until it is pressed again</source>
        <translation>Hält nach der jetzigen Seite an, bis noch einmal gedrückt wird</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Stops when all pages of the file in hand are done</source>
        <translation>Endet, wenn alle Seiten der jetzigen Datei fertig sind</translation>
    </message>
    <message>
        <source>Stop After This File</source>
        <translation>Nach dieser Datei enden</translation>
    </message>
    <message>
        <source>Stops after the page in hand</source>
        <translation>Endet nach der jetzigen Seite</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Saves the problems as text: file, page and what happened, with tabs between them</source>
        <translation>Sichert die Probleme als Text: Datei, Seite und was geschah, mit Tabulatoren dazwischen</translation>
    </message>
    <message>
        <source>Save List...</source>
        <translation>Liste sichern...</translation>
    </message>
</context>
<context>
    <name>SettingsPane</name>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>For&amp;mat:</source>
        <translation>For&amp;mat:</translation>
    </message>
    <message>
        <source>The kind of image that is written</source>
        <translation>Die Art der Bilder</translation>
    </message>
    <message>
        <source>JPEG</source>
        <translation>JPEG</translation>
    </message>
    <message>
        <source>PNG</source>
        <translation>PNG</translation>
    </message>
    <message>
        <source>TIFF</source>
        <translation>TIFF</translation>
    </message>
    <message>
        <source>BMP</source>
        <translation>BMP</translation>
    </message>
    <message>
        <source>GIF</source>
        <translation>GIF</translation>
    </message>
    <message>
        <source>Files of this format hold no texts, dates, XMP, Exif, GPS or IPTC data: what pages have of these stays behind.</source>
        <translation>Dateien dieses Formats halten keine Texte, Daten, XMP-, Exif-, GPS- oder IPTC-Angaben: was Seiten davon haben, bleibt zurück.</translation>
    </message>
    <message>
        <source>&amp;Quality:</source>
        <translation>&amp;Qualität:</translation>
    </message>
    <message>
        <source>Higher keeps more detail and makes larger files</source>
        <translation>Höher hält mehr Einzelheiten und macht größere Dateien</translation>
    </message>
    <message>
        <source>JPEG quality</source>
        <translation>JPEG-Qualität</translation>
    </message>
    <message>
        <source>100%</source>
        <translation>100%</translation>
    </message>
    <message>
        <source>Smaller files</source>
        <translation>Kleinere Dateien</translation>
    </message>
    <message>
        <source>Better images</source>
        <translation>Bessere Bilder</translation>
    </message>
    <message>
        <source>Compressio&amp;n:</source>
        <translation>&amp;Kompression:</translation>
    </message>
    <message>
        <source>How the pixels of TIFF files are packed; the two CCITT kinds are for black and white pages</source>
        <translation>Wie die Pixel von TIFF-Dateien gepackt werden; die beiden CCITT-Arten sind für schwarz-weiße Seiten</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>CCITT Group 3</source>
        <translation>CCITT Gruppe 3</translation>
    </message>
    <message>
        <source>CCITT Group 4</source>
        <translation>CCITT Gruppe 4</translation>
    </message>
    <message>
        <source>LZW</source>
        <translation>LZW</translation>
    </message>
    <message>
        <source>PackBits</source>
        <translation>PackBits</translation>
    </message>
    <message>
        <source>Off: all pages of a source file go into one TIFF file</source>
        <translation>Aus: alle Seiten einer Quelle kommen in eine TIFF-Datei</translation>
    </message>
    <message>
        <source>One file for each pa&amp;ge</source>
        <translation>Eine Datei &amp;je Seite</translation>
    </message>
    <message>
        <source>File names</source>
        <translation>Dateinamen</translation>
    </message>
    <message>
        <source>Sep&amp;arator:</source>
        <translation>&amp;Trenner:</translation>
    </message>
    <message>
        <source>Text between the name of the source file and the page number</source>
        <translation>Text zwischen dem Namen der Quelle und der Seitenzahl</translation>
    </message>
    <message>
        <source>Output Folder</source>
        <translation>Ausgabeordner</translation>
    </message>
    <message>
        <source>Save images in fo&amp;lder:</source>
        <translation>Bi&amp;lder speichern in:</translation>
    </message>
    <message>
        <source>The folder that takes the images</source>
        <translation>Der Ordner, der die Bilder aufnimmt</translation>
    </message>
    <message>
        <source>Folder of the source file</source>
        <translation>Ordner der Quelle</translation>
    </message>
    <message>
        <source>Selects or creates the output folder</source>
        <translation>Wählt oder legt den Ausgabeordner an</translation>
    </message>
    <message>
        <source>&amp;Choose...</source>
        <translation>&amp;Wählen...</translation>
    </message>
    <message>
        <source>Folders that took images before</source>
        <translation>Ordner, die schon Bilder bekamen</translation>
    </message>
    <message>
        <source>Recent</source>
        <translation>Frühere</translation>
    </message>
    <message>
        <source>With no folder here, images are saved beside their source files.</source>
        <translation>Ohne Ordner kommen die Bilder neben ihre Quellen.</translation>
    </message>
    <message>
        <source>Starts with this folder the next time</source>
        <translation>Beginnt das nächste Mal mit diesem Ordner</translation>
    </message>
    <message>
        <source>Use as default folder</source>
        <translation>Als Standardordner nehmen</translation>
    </message>
    <message>
        <source>Opens the output folder when a conversion has ended</source>
        <translation>Öffnet den Ausgabeordner, wenn eine Umwandlung fertig ist</translation>
    </message>
    <message>
        <source>Open folder when done</source>
        <translation>Ordner danach öffnen</translation>
    </message>
    <message>
        <source>Takes the converted files off the list when the progress panel is closed</source>
        <translation>Nimmt die umgewandelten Dateien aus der Liste, wenn die Anzeige geschlossen wird</translation>
    </message>
    <message>
        <source>Re&amp;move converted files</source>
        <translation>Umgewandelte &amp;entfernen</translation>
    </message>
    <message>
        <source>More</source>
        <translation>Mehr</translation>
    </message>
    <message>
        <source>What the first image of the ticked files will be called</source>
        <translation>Wie das erste Bild der angehakten Dateien heißen wird</translation>
    </message>
    <message>
        <source>Named sets of all options: choose, save, import, export</source>
        <translation>Benannte Sätze aller Optionen: wählen, sichern, importieren, exportieren</translation>
    </message>
    <message>
        <source>Presets</source>
        <translation>Vorgaben</translation>
    </message>
    <message>
        <source>Sets the options of all tabs as they are at first; the folder stays</source>
        <translation>Setzt die Optionen aller Seiten auf den Anfang; der Ordner bleibt</translation>
    </message>
    <message>
        <source>Restore Defaults</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Opens the guide</source>
        <translation>Öffnet die Anleitung</translation>
    </message>
    <message>
        <source>About these settings</source>
        <translation>Zu diesen Einstellungen</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
</context>
<context>
    <name>pagestack::Addition</name>
    <message numerus="yes">
        <source>%Ln added</source>
        <translation>
            <numerusform>%Ln hinzugefügt</numerusform>
            <numerusform>%Ln hinzugefügt</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln already there</source>
        <translation>
            <numerusform>%Ln schon da</numerusform>
            <numerusform>%Ln schon da</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln left out</source>
        <translation>
            <numerusform>%Ln ausgelassen</numerusform>
            <numerusform>%Ln ausgelassen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln sub-folder(s) not searched</source>
        <translation>
            <numerusform>%Ln Unterordner nicht durchsucht</numerusform>
            <numerusform>%Ln Unterordner nicht durchsucht</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln file(s) not named .tif or .tiff</source>
        <translation>
            <numerusform>%Ln Datei heißt nicht .tif oder .tiff</numerusform>
            <numerusform>%Ln Dateien heißen nicht .tif oder .tiff</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>and %Ln more</source>
        <translation>
            <numerusform>und %Ln weitere</numerusform>
            <numerusform>und %Ln weitere</numerusform>
        </translation>
    </message>
    <message>
        <source>then cancelled</source>
        <translation>dann abgebrochen</translation>
    </message>
    <message>
        <source>then ended by an error</source>
        <translation>dann durch einen Fehler beendet</translation>
    </message>
    <message numerus="yes">
        <source>%Ln line(s) that are no path of a file</source>
        <translation>
            <numerusform>%Ln Zeile, die kein Pfad einer Datei ist</numerusform>
            <numerusform>%Ln Zeilen, die keine Pfade von Dateien sind</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::AlertPanel</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>pagestack::CommandTips</name>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
</context>
<context>
    <name>pagestack::ComparedResult</name>
    <message>
        <source>Of this large page only a part is compared, that in the middle of the view.</source>
        <translation>Von dieser großen Seite wird nur ein Teil verglichen, der in der Mitte der Ansicht.</translation>
    </message>
    <message>
        <source>%1, about %2</source>
        <translation>%1, etwa %2</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
</context>
<context>
    <name>pagestack::ConversionOptions</name>
    <message>
        <source>As many as the last page has</source>
        <translation>So viele wie die letzte Seite hat</translation>
    </message>
    <message>
        <source>output format, default jpeg; also jpg and tif, in any case</source>
        <translation>Ausgabeformat</translation>
    </message>
    <message>
        <source>JPEG quality in tenths, default 10</source>
        <translation>JPEG-Qualität in Zehnteln</translation>
    </message>
    <message>
        <source>TIFF compression, default none</source>
        <translation>TIFF-Kompression</translation>
    </message>
    <message>
        <source>TIFF: one file a page instead of one a source</source>
        <translation>TIFF: eine Datei je Seite statt einer je Quelle</translation>
    </message>
    <message>
        <source>stands between name and page number, default empty; &apos;:&apos; becomes &apos;-&apos;</source>
        <translation>steht zwischen Namen und Seitenzahl; &apos;:&apos; wird zu &apos;-&apos;</translation>
    </message>
    <message>
        <source>repeats the folders of the sources below the output folder: those below a folder that is given, or below the deepest one that holds all that is given</source>
        <translation>wiederholt die Ordner der Quellen unter dem Ausgabeordner: die unter einem genannten Ordner, sonst die unter dem tiefsten, der alle Quellen enthält</translation>
    </message>
    <message>
        <source>Keep folder structure</source>
        <translation>Ordnerstruktur erhalten</translation>
    </message>
    <message>
        <source>Folders and names</source>
        <translation>Ordner und Namen</translation>
    </message>
    <message>
        <source>page numbers have at least so many digits, default 1; auto: as many as that of the source&apos;s last page</source>
        <translation>Seitenzahlen haben mindestens so viele Ziffern; auto: so viele wie die der letzten Seite der Quelle</translation>
    </message>
    <message>
        <source>Digits of page numbers</source>
        <translation>Ziffern der Seitenzahlen</translation>
    </message>
    <message>
        <source>what outputs are called, without the extension, default &apos;%1&apos;; also {pages} the source has, {folder} of the source, {parent} of that folder and {n}, the running number of the output; {n:6}, {page:6} and {pages:6} have at least six digits; {sep} and {page} are empty in a file that keeps all pages together; &apos;:&apos; becomes &apos;-&apos;</source>
        <translation>wie Ausgaben heißen, ohne Endung, sonst &apos;%1&apos;; auch {pages} der Quelle, ihr {folder}, {parent} über diesem und {n}, die laufende Nummer der Ausgabe; {n:6}, {page:6} und {pages:6} haben mindestens sechs Ziffern; {sep} und {page} sind leer, wo alle Seiten in eine Datei kommen; &apos;:&apos; wird zu &apos;-&apos;</translation>
    </message>
    <message>
        <source>Names of outputs</source>
        <translation>Namen der Ausgaben</translation>
    </message>
    <message>
        <source>the pages of each source that are converted, from 1 on, such as 1,3-5,-1: 3- is the third and all behind it, -1 the last, -3- the last three, 2--2 all but the first and the last; a page that a source lacks is an error of that source</source>
        <translation>die Seiten jeder Quelle, von 1 an, etwa 1,3-5,-1: 3- ist die dritte und alle danach, -1 die letzte, -3- die letzten drei, 2--2 alle außer der ersten und der letzten; eine Seite, die einer Quelle fehlt, ist ein Fehler dieser Quelle</translation>
    </message>
    <message>
        <source>Pages to convert</source>
        <translation>Gewählte Seiten</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>all; 1,3-5,-1</source>
        <translation>alle; 1,3-5,-1</translation>
    </message>
    <message>
        <source>leaves out thumbnails and masks, pages whose SubfileType says so; page numbers stay</source>
        <translation>lässt Vorschaubilder und Masken aus, Seiten, deren SubfileType das sagt; Seitenzahlen bleiben</translation>
    </message>
    <message>
        <source>Leave out thumbnails and masks</source>
        <translation>Vorschaubilder und Masken auslassen</translation>
    </message>
    <message>
        <source>JPEG, PNG, TIFF: leaves out what pages say of themselves (texts, dates, XMP, Exif, GPS, IPTC); colour profile and resolution stay</source>
        <translation>JPEG, PNG, TIFF: lässt aus, was Seiten von sich sagen (Texte, Daten, XMP, Exif, GPS, IPTC); Farbprofil und Auflösung bleiben</translation>
    </message>
    <message>
        <source>Leave out metadata</source>
        <translation>Metadaten auslassen</translation>
    </message>
    <message>
        <source>warns of pages whose resolution is not N pixels an inch; they are converted as they are</source>
        <translation>warnt vor Seiten, deren Auflösung nicht N Pixel je Zoll ist; sie werden umgewandelt, wie sie sind</translation>
    </message>
    <message>
        <source>Expected resolution</source>
        <translation>Erwartete Auflösung</translation>
    </message>
    <message>
        <source>any; 300 for 300 dpi</source>
        <translation>beliebig; 300 für 300 dpi</translation>
    </message>
    <message>
        <source>makes gray and colour black and white, as fax compressions need: white from a threshold of luminance on (&apos;threshold=140&apos; sets it), from the one that parts the levels of a page best, or by error diffusion; pages one bit deep stay as they are</source>
        <translation>macht Grau und Farbe schwarz-weiß, wie es Faxkompressionen brauchen: weiß von einer Schwelle der Helligkeit an, von der, die die Stufen einer Seite am besten trennt, oder durch Fehlerverteilung; Seiten von einem Bit bleiben, wie sie sind</translation>
    </message>
    <message>
        <source>Black and white</source>
        <translation>Schwarz-weiß</translation>
    </message>
    <message>
        <source>Colours</source>
        <translation>Farben</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>By a threshold</source>
        <translation>Mit einer Schwelle</translation>
    </message>
    <message>
        <source>By the best threshold of each page</source>
        <translation>Mit der besten Schwelle jeder Seite</translation>
    </message>
    <message>
        <source>By dithering</source>
        <translation>Mit Dithering</translation>
    </message>
    <message>
        <source>the threshold of --bilevel threshold, default 128</source>
        <translation>die Schwelle, sonst 128</translation>
    </message>
    <message>
        <source>Threshold</source>
        <translation>Schwelle</translation>
    </message>
    <message>
        <source>128, of 1 to 255</source>
        <translation>128, von 1 bis 255</translation>
    </message>
    <message>
        <source>converts colours to sRGB through the page&apos;s profile, which is then left out</source>
        <translation>rechnet Farben über das Profil der Seite in sRGB um, das dann wegfällt</translation>
    </message>
    <message>
        <source>Convert colours to sRGB</source>
        <translation>Farben in sRGB umrechnen</translation>
    </message>
    <message>
        <source>gives outputs the modification time of their source</source>
        <translation>gibt Ausgaben die Änderungszeit ihrer Quelle</translation>
    </message>
    <message>
        <source>Keep file dates</source>
        <translation>Dateidatum erhalten</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Dateien</translation>
    </message>
    <message>
        <source>reads each output back before it gets its name; one that does not show its page is not saved</source>
        <translation>liest jede Ausgabe zurück, bevor sie ihren Namen bekommt; eine, die ihre Seite nicht zeigt, wird nicht gesichert</translation>
    </message>
    <message>
        <source>Verify outputs</source>
        <translation>Ausgaben prüfen</translation>
    </message>
    <message>
        <source>Proof</source>
        <translation>Nachweis</translation>
    </message>
    <message>
        <source>writes a file SHA256SUMS beside the outputs, as &apos;sha256sum -c&apos; reads it; one that is there keeps its lines of other files</source>
        <translation>schreibt eine Datei SHA256SUMS neben die Ausgaben, wie &apos;sha256sum -c&apos; sie liest; eine vorhandene behält ihre Zeilen über andere Dateien</translation>
    </message>
    <message>
        <source>Write SHA256SUMS</source>
        <translation>SHA256SUMS schreiben</translation>
    </message>
    <message>
        <source>writes a record of the run, a JSON document, beside its log</source>
        <translation>schreibt einen Nachweis des Laufs, ein JSON-Dokument, neben sein Protokoll</translation>
    </message>
    <message>
        <source>Write a record of the run</source>
        <translation>Nachweis des Laufs schreiben</translation>
    </message>
    <message>
        <source>Encode JPEG data anew</source>
        <translation>JPEG-Daten neu codieren</translation>
    </message>
    <message>
        <source>JPEG at quality 10: decodes pages whose data are JPEG and encodes them anew; else their data are taken over as they are</source>
        <translation>JPEG mit Qualität 10: decodiert Seiten, deren Daten JPEG sind, und codiert sie neu; sonst werden ihre Daten übernommen, wie sie sind</translation>
    </message>
    <message>
        <source>TIFF: copies the data of pages as they are compressed, JPEG included; what cannot be copied gets --compression</source>
        <translation>TIFF: übernimmt die Daten der Seiten so, wie sie komprimiert sind, auch JPEG; was nicht übernommen werden kann, bekommt --compression</translation>
    </message>
    <message>
        <source>Keep the compression of TIFF pages</source>
        <translation>Kompression von TIFF-Seiten behalten</translation>
    </message>
</context>
<context>
    <name>pagestack::Dates</name>
    <message>
        <source>Total Time Taken : %1 %2/%3</source>
        <translation>Gebrauchte Zeit: %1 %2/%3</translation>
    </message>
    <message>
        <source>0 sec(s)</source>
        <translation>0 Sek.</translation>
    </message>
</context>
<context>
    <name>pagestack::DesktopRun</name>
    <message>
        <source>Open folder</source>
        <translation>Ordner öffnen</translation>
    </message>
</context>
<context>
    <name>pagestack::FileChooser</name>
    <message>
        <source>TIFF files (%1)</source>
        <translation>TIFF-Dateien (%1)</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Select</source>
        <translation>Auswählen</translation>
    </message>
    <message>
        <source>Text files (%1)</source>
        <translation>Textdateien (%1)</translation>
    </message>
</context>
<context>
    <name>pagestack::FileTableModel</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>Pages to convert</source>
        <translation>Gewählte Seiten</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>Location</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Modified</source>
        <translation>Geändert</translation>
    </message>
    <message>
        <source>Created</source>
        <translation>Erstellt</translation>
    </message>
    <message>
        <source>Accessed</source>
        <translation>Gelesen</translation>
    </message>
    <message>
        <source>No page of this file can be read.</source>
        <translation>Keine Seite dieser Datei lässt sich lesen.</translation>
    </message>
    <message>
        <source>%1 is converted</source>
        <translation>%1 wird umgewandelt</translation>
    </message>
    <message>
        <source>%1 is left out</source>
        <translation>%1 wird ausgelassen</translation>
    </message>
    <message>
        <source>Converted when ticked</source>
        <translation>Wird umgewandelt, wenn angehakt</translation>
    </message>
    <message>
        <source>Such as 1,3-5,-1 (the last one); F2 or a double click edits it. Empty: what the options say, or all.</source>
        <translation>Etwa 1,3-5,-1 (die letzte); mit F2 oder Doppelklick zu ändern. Leer: was die Optionen sagen, sonst alle.</translation>
    </message>
    <message>
        <source>Pixels</source>
        <translation>Pixel</translation>
    </message>
</context>
<context>
    <name>pagestack::FilterControl</name>
    <message>
        <source>Failed (%1)</source>
        <translation>Misslungen (%1)</translation>
    </message>
    <message>
        <source>Warnings (%1)</source>
        <translation>Warnungen (%1)</translation>
    </message>
    <message>
        <source>Not reached (%1)</source>
        <translation>Nicht erreicht (%1)</translation>
    </message>
    <message>
        <source>%1 of %2 shown; all ticked ones convert</source>
        <translation>%1 von %2 gezeigt; alle angehakten werden umgewandelt</translation>
    </message>
</context>
<context>
    <name>pagestack::FindControl</name>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>No file has it</source>
        <translation>Keine Datei hat das</translation>
    </message>
</context>
<context>
    <name>pagestack::ImportFilesWindowController</name>
    <message>
        <source>Select Text File To Import:</source>
        <translation>Textdatei zum Importieren wählen:</translation>
    </message>
    <message>
        <source>Total Files Found : %1</source>
        <translation>Gefundene Dateien: %1</translation>
    </message>
    <message>
        <source>1 duplicate</source>
        <translation>1 doppelte</translation>
    </message>
    <message numerus="yes">
        <source>%n duplicates</source>
        <translation>
            <numerusform>%n doppelte</numerusform>
            <numerusform>%n doppelte</numerusform>
        </translation>
    </message>
    <message>
        <source>1 line that is no TIFF file</source>
        <translation>1 Zeile, die keine TIFF-Datei ist</translation>
    </message>
    <message numerus="yes">
        <source>%n lines that are no TIFF files</source>
        <translation>
            <numerusform>%n Zeile, die keine TIFF-Datei ist</numerusform>
            <numerusform>%n Zeilen, die keine TIFF-Dateien sind</numerusform>
        </translation>
    </message>
    <message>
        <source>1 file that does not exist</source>
        <translation>1 Datei, die es nicht gibt</translation>
    </message>
    <message numerus="yes">
        <source>%n files that do not exist</source>
        <translation>
            <numerusform>%n Datei, die es nicht gibt</numerusform>
            <numerusform>%n Dateien, die es nicht gibt</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>Please select file to import!</source>
        <translation>Bitte eine Datei zum Importieren wählen!</translation>
    </message>
    <message>
        <source>Please paste file(s) path to import!</source>
        <translation>Bitte die Pfade der Dateien einfügen!</translation>
    </message>
    <message>
        <source>No File(s) Found!</source>
        <translation>Keine Dateien gefunden!</translation>
    </message>
</context>
<context>
    <name>pagestack::KeyLetter</name>
    <message>
        <source>r</source>
        <comment>removeBtn</comment>
        <translation>r</translation>
    </message>
    <message>
        <source>i</source>
        <comment>importBtn</comment>
        <translation>i</translation>
    </message>
    <message>
        <source>f</source>
        <comment>addFilesBtn</comment>
        <translation>z</translation>
    </message>
    <message>
        <source>o</source>
        <comment>addFolderBtn</comment>
        <translation>o</translation>
    </message>
    <message>
        <source>u</source>
        <comment>inculdeSubfoldersBtn</comment>
        <translation>u</translation>
    </message>
    <message>
        <source>s</source>
        <comment>convertBtn</comment>
        <translation>n</translation>
    </message>
    <message>
        <source>d</source>
        <comment>setCurrentAsDefaultOutputFolderPathBtn</comment>
        <translation>s</translation>
    </message>
    <message>
        <source>p</source>
        <comment>openFolderAfterConversionBtn</comment>
        <translation>f</translation>
    </message>
    <message>
        <source>l</source>
        <comment>viewLogBtn</comment>
        <translation>l</translation>
    </message>
    <message>
        <source>c</source>
        <comment>cancelProcessBtn</comment>
        <translation>c</translation>
    </message>
</context>
<context>
    <name>pagestack::ListCommands</name>
    <message numerus="yes">
        <source>Remove %n File(s)</source>
        <translation>
            <numerusform>%n Datei entfernen</numerusform>
            <numerusform>%n Dateien entfernen</numerusform>
        </translation>
    </message>
    <message>
        <source>Are you sure to remove all file(s)?</source>
        <translation>Wirklich alle Dateien aus der Liste nehmen?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message numerus="yes">
        <source>Remove %n Converted File(s)</source>
        <translation>
            <numerusform>%n umgewandelte Datei entfernen</numerusform>
            <numerusform>%n umgewandelte Dateien entfernen</numerusform>
        </translation>
    </message>
    <message>
        <source>Export List To Tab Delimited Text File :</source>
        <translation>Liste als Text mit Tabulatoren sichern:</translation>
    </message>
</context>
<context>
    <name>pagestack::ListEditor</name>
    <message numerus="yes">
        <source>Tick %n File(s)</source>
        <translation>
            <numerusform>%n Datei anhaken</numerusform>
            <numerusform>%n Dateien anhaken</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Untick %n File(s)</source>
        <translation>
            <numerusform>Haken von %n Datei entfernen</numerusform>
            <numerusform>Haken von %n Dateien entfernen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Invert Ticks of %n File(s)</source>
        <translation>
            <numerusform>Haken von %n Datei umkehren</numerusform>
            <numerusform>Haken von %n Dateien umkehren</numerusform>
        </translation>
    </message>
    <message>
        <source>Choose Pages</source>
        <translation>Seiten wählen</translation>
    </message>
    <message numerus="yes">
        <source>Move %n File(s) Up</source>
        <translation>
            <numerusform>%n Datei nach oben</numerusform>
            <numerusform>%n Dateien nach oben</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Move %n File(s) Down</source>
        <translation>
            <numerusform>%n Datei nach unten</numerusform>
            <numerusform>%n Dateien nach unten</numerusform>
        </translation>
    </message>
    <message>
        <source>Sort</source>
        <translation>Sortieren</translation>
    </message>
    <message>
        <source>Sort Backwards</source>
        <translation>Rückwärts sortieren</translation>
    </message>
    <message numerus="yes">
        <source>Move %n File(s)</source>
        <translation>
            <numerusform>%n Datei verschieben</numerusform>
            <numerusform>%n Dateien verschieben</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::LoadControl</name>
    <message>
        <source>Select TIFF File(s):</source>
        <translation>TIFF-Dateien wählen:</translation>
    </message>
    <message>
        <source>Select folder(s) contains TIFF File(s):</source>
        <translation>Ordner mit TIFF-Dateien wählen:</translation>
    </message>
    <message>
        <source>In Process...</source>
        <translation>In Arbeit...</translation>
    </message>
    <message>
        <source>The clipboard has no files and no paths of files</source>
        <translation>In der Zwischenablage sind weder Dateien noch Pfade von Dateien</translation>
    </message>
    <message>
        <source>The text on the clipboard is too long; save it as a file to import it</source>
        <translation>Der Text in der Zwischenablage ist zu lang; als Datei gesichert lässt er sich importieren</translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) wait until the conversion is closed</source>
        <translation>
            <numerusform>%n Datei wartet, bis die Umwandlung geschlossen ist</numerusform>
            <numerusform>%n Dateien warten, bis die Umwandlung geschlossen ist</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::OutputFolderCheck</name>
    <message>
        <source>No output folder selected, file(s) will be saved in source folder.
Do you want to continue?</source>
        <translation>Kein Ausgabeordner gewählt; die Bilder kommen in den Ordner ihrer Quelle.
Fortfahren?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>Output folder is non-writable!<byte value="xd"/>
Please select writable output folder.</source>
        <translation>In den Ausgabeordner lässt sich nicht schreiben!
Bitte einen anderen wählen.</translation>
    </message>
    <message>
        <source>Output folder missing or invalid path!<byte value="xd"/>
Please select valid output folder.</source>
        <translation>Der Ausgabeordner fehlt, oder der Pfad ist ungültig!
Bitte einen gültigen wählen.</translation>
    </message>
    <message>
        <source>Create Folder</source>
        <translation>Ordner anlegen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>pagestack::PageThumbnails</name>
    <message>
        <source>Page %1</source>
        <translation>Seite %1</translation>
    </message>
</context>
<context>
    <name>pagestack::PagestackAppDelegate</name>
    <message>
        <source>Pagestack %1 turns TIFF files into images.

%2</source>
        <translation>Pagestack %1 macht Bilder aus TIFF-Dateien.

%2</translation>
    </message>
    <message>
        <source>More</source>
        <translation>Mehr</translation>
    </message>
    <message>
        <source>MACPagestack1</source>
        <comment>file of the guide, which may be another in another language</comment>
        <translation>MACPagestack1-de</translation>
    </message>
</context>
<context>
    <name>pagestack::PictureView</name>
    <message>
        <source>Reading the page...</source>
        <translation>Die Seite wird gelesen...</translation>
    </message>
</context>
<context>
    <name>pagestack::PlanLine</name>
    <message>
        <source>, the folder is missing</source>
        <translation>, der Ordner fehlt</translation>
    </message>
    <message numerus="yes">
        <source>, %Ln exist</source>
        <translation>
            <numerusform>, %Ln gibt es schon</numerusform>
            <numerusform>, %Ln gibt es schon</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %Ln clash</source>
        <translation>
            <numerusform>, %Ln stößt zusammen</numerusform>
            <numerusform>, %Ln stoßen zusammen</numerusform>
        </translation>
    </message>
    <message>
        <source>beside their sources</source>
        <translation>neben ihren Quellen</translation>
    </message>
    <message numerus="yes">
        <source>%Ln image(s)</source>
        <translation>
            <numerusform>%Ln Bild</numerusform>
            <numerusform>%Ln Bilder</numerusform>
        </translation>
    </message>
    <message>
        <source>The options leave no page of the ticked files to convert.</source>
        <translation>Die Optionen lassen keine Seite der angehakten Dateien übrig.</translation>
    </message>
</context>
<context>
    <name>pagestack::PresetMenu</name>
    <message>
        <source>Save As...</source>
        <translation>Sichern unter...</translation>
    </message>
    <message>
        <source>Import...</source>
        <translation>Importieren...</translation>
    </message>
    <message>
        <source>Export...</source>
        <translation>Exportieren...</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>The preset %1 cannot be removed.</source>
        <translation>Die Vorgabe %1 lässt sich nicht entfernen.</translation>
    </message>
    <message>
        <source>Save Preset</source>
        <translation>Vorgabe sichern</translation>
    </message>
    <message>
        <source>Name:</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
    <message>
        <source>There is a preset %1 already.</source>
        <translation>Eine Vorgabe %1 gibt es schon.</translation>
    </message>
    <message>
        <source>Replace</source>
        <translation>Ersetzen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Import Preset:</source>
        <translation>Vorgabe importieren:</translation>
    </message>
    <message>
        <source>Export the present options as a preset:</source>
        <translation>Die jetzigen Optionen als Vorgabe exportieren:</translation>
    </message>
    <message>
        <source>Preset</source>
        <translation>Vorgabe</translation>
    </message>
</context>
<context>
    <name>pagestack::PreviewPane</name>
    <message>
        <source>Highlight a file to see its pages.</source>
        <translation>Eine Datei markieren, um ihre Seiten zu sehen.</translation>
    </message>
    <message>
        <source>of %1</source>
        <translation>von %1</translation>
    </message>
</context>
<context>
    <name>pagestack::ProblemList</name>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Page</source>
        <translation>Seite</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Copy All</source>
        <translation>Alles kopieren</translation>
    </message>
    <message>
        <source>Show in List</source>
        <translation>In der Liste zeigen</translation>
    </message>
    <message>
        <source>Warning: %1</source>
        <translation>Warnung: %1</translation>
    </message>
    <message>
        <source>What happened</source>
        <translation>Was geschah</translation>
    </message>
    <message numerus="yes">
        <source>%n more are in the log only.</source>
        <translation>
            <numerusform>%n weiteres steht nur im Protokoll.</numerusform>
            <numerusform>%n weitere stehen nur im Protokoll.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::Process</name>
    <message>
        <source>Pagestack unable able to convert some of the files!<byte value="xd"/>
Please check log for more information.</source>
        <translation>Pagestack konnte einige der Dateien nicht umwandeln!
Das Protokoll sagt mehr.</translation>
    </message>
    <message>
        <source>Process cancelled!</source>
        <translation>Abgebrochen!</translation>
    </message>
    <message>
        <source>All files converted successfully.</source>
        <translation>Alle Dateien sind umgewandelt.</translation>
    </message>
    <message>
        <source>Total %1 files converted successfully.</source>
        <translation>Insgesamt %1 Dateien umgewandelt.</translation>
    </message>
</context>
<context>
    <name>pagestack::ProcessPanel</name>
    <message>
        <source>Converting</source>
        <translation>Umwandlung</translation>
    </message>
    <message>
        <source>Looking at what is there...</source>
        <translation>Es wird nachgesehen, was da ist...</translation>
    </message>
    <message>
        <source>%1 written, %2</source>
        <translation>%1 geschrieben, %2</translation>
    </message>
    <message numerus="yes">
        <source>, %n problem(s)</source>
        <translation>
            <numerusform>, %n Problem</numerusform>
            <numerusform>, %n Probleme</numerusform>
        </translation>
    </message>
    <message>
        <source> - finishing the page in hand</source>
        <translation> - die jetzige Seite wird fertig</translation>
    </message>
    <message>
        <source> - finishing the file in hand</source>
        <translation> - die jetzige Datei wird fertig</translation>
    </message>
    <message>
        <source> - paused</source>
        <translation> - angehalten</translation>
    </message>
    <message numerus="yes">
        <source>%n problem(s)</source>
        <translation>
            <numerusform>%n Problem</numerusform>
            <numerusform>%n Probleme</numerusform>
        </translation>
    </message>
    <message>
        <source>under a second</source>
        <translation>unter einer Sekunde</translation>
    </message>
    <message>
        <source>Cancelled</source>
        <translation>Abgebrochen</translation>
    </message>
    <message>
        <source>Finished with problems</source>
        <translation>Fertig, mit Problemen</translation>
    </message>
    <message>
        <source>Finished</source>
        <translation>Fertig</translation>
    </message>
    <message numerus="yes">
        <source>%n more are in the log only.</source>
        <translation>
            <numerusform>%n weiteres steht nur im Protokoll.</numerusform>
            <numerusform>%n weitere stehen nur im Protokoll.</numerusform>
        </translation>
    </message>
    <message>
        <source>Resume</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Ended early</source>
        <translation>Vorzeitig beendet</translation>
    </message>
</context>
<context>
    <name>pagestack::Reasons</name>
    <message>
        <source>page %1: %2</source>
        <translation>Seite %1: %2</translation>
    </message>
    <message>
        <source>1 page: %1</source>
        <translation>1 Seite: %1</translation>
    </message>
    <message>
        <source>%1 pages: %2</source>
        <translation>%1 Seiten: %2</translation>
    </message>
    <message>
        <source>the decoder says: %1</source>
        <translation>der Decoder meldet: %1</translation>
    </message>
    <message>
        <source>giflib says: %1</source>
        <translation>giflib meldet: %1</translation>
    </message>
    <message>
        <source>libjpeg says: %1</source>
        <translation>libjpeg meldet: %1</translation>
    </message>
    <message>
        <source>libpng says: %1</source>
        <translation>libpng meldet: %1</translation>
    </message>
    <message>
        <source>unknown error</source>
        <translation>unbekannter Fehler</translation>
    </message>
    <message>
        <source>read back, the file is refused: %1</source>
        <translation>zurückgelesen und abgelehnt: %1</translation>
    </message>
    <message>
        <source>cannot read: the bytes were never written</source>
        <translation>Lesen nicht möglich: die Bytes wurden nie geschrieben</translation>
    </message>
    <message>
        <source>cannot read: the file has become shorter</source>
        <translation>Lesen nicht möglich: die Datei ist kürzer geworden</translation>
    </message>
    <message>
        <source>cannot read: %1</source>
        <translation>Lesen nicht möglich: %1</translation>
    </message>
    <message>
        <source>cannot write: %1</source>
        <translation>Schreiben nicht möglich: %1</translation>
    </message>
    <message>
        <source>cannot create a temporary file: %1</source>
        <translation>eine temporäre Datei lässt sich nicht anlegen: %1</translation>
    </message>
    <message>
        <source>cannot make the temporary file: %1</source>
        <translation>die temporäre Datei lässt sich nicht anlegen: %1</translation>
    </message>
    <message>
        <source>cannot map the temporary file: %1</source>
        <translation>die temporäre Datei lässt sich nicht in den Speicher einblenden: %1</translation>
    </message>
    <message>
        <source>cannot make a temporary folder: %1</source>
        <translation>ein temporärer Ordner lässt sich nicht anlegen: %1</translation>
    </message>
    <message>
        <source>cannot create a file in the folder: %1</source>
        <translation>in dem Ordner lässt sich keine Datei anlegen: %1</translation>
    </message>
    <message>
        <source>cannot make the folder: %1</source>
        <translation>der Ordner lässt sich nicht anlegen: %1</translation>
    </message>
    <message>
        <source>cannot keep the date: %1</source>
        <translation>das Dateidatum lässt sich nicht übernehmen: %1</translation>
    </message>
    <message>
        <source>cannot keep the permissions: %1</source>
        <translation>die Zugriffsrechte lassen sich nicht übernehmen: %1</translation>
    </message>
    <message>
        <source>cannot put the file in place: %1</source>
        <translation>die Datei lässt sich nicht an ihren Platz bringen: %1</translation>
    </message>
    <message>
        <source>cannot open the file: %1</source>
        <translation>die Datei lässt sich nicht öffnen: %1</translation>
    </message>
    <message>
        <source>cannot open the file to replace: %1</source>
        <translation>die zu ersetzende Datei lässt sich nicht öffnen: %1</translation>
    </message>
    <message>
        <source>cannot follow the symbolic link: %1</source>
        <translation>der symbolischen Verknüpfung lässt sich nicht folgen: %1</translation>
    </message>
    <message>
        <source>%1; what was there is damaged, since it could not be put back</source>
        <translation>%1; was dort stand, ist beschädigt, da es sich nicht wiederherstellen ließ</translation>
    </message>
    <message>
        <source>the date is not kept, since the file that was replaced is another user&apos;s</source>
        <translation>das Dateidatum ist nicht übernommen, da die ersetzte Datei jemand anderem gehört</translation>
    </message>
    <message>
        <source>the symbolic link there belongs to another user, in a folder open to others</source>
        <translation>die symbolische Verknüpfung dort gehört jemand anderem, in einem Ordner, der anderen offensteht</translation>
    </message>
    <message>
        <source>the output has no name</source>
        <translation>die Ausgabe hat keinen Namen</translation>
    </message>
    <message>
        <source>a folder of that name is in the way</source>
        <translation>ein Ordner dieses Namens steht im Weg</translation>
    </message>
    <message>
        <source>what is there is no regular file</source>
        <translation>was dort steht, ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>the file there is write-protected</source>
        <translation>die Datei dort ist schreibgeschützt</translation>
    </message>
    <message>
        <source>a file of that name has appeared during the run</source>
        <translation>während des Laufs ist eine Datei dieses Namens aufgetaucht</translation>
    </message>
    <message>
        <source>the file is kept as it is, since it has changed meanwhile</source>
        <translation>die Datei bleibt, wie sie ist, da sie sich inzwischen geändert hat</translation>
    </message>
    <message>
        <source>the file is kept as it is, since its line %1 is none of sha256sum</source>
        <translation>die Datei bleibt, wie sie ist, da ihre Zeile %1 keine von sha256sum ist</translation>
    </message>
    <message>
        <source>the file that is there cannot be read: %1</source>
        <translation>die vorhandene Datei lässt sich nicht lesen: %1</translation>
    </message>
    <message>
        <source>%1 is no folder</source>
        <translation>%1 ist kein Ordner</translation>
    </message>
    <message>
        <source>folder %1 leads out of the output folder</source>
        <translation>der Ordner %1 führt aus dem Ausgabeordner hinaus</translation>
    </message>
    <message>
        <source>folder %1 is not writable</source>
        <translation>in den Ordner %1 lässt sich nicht schreiben</translation>
    </message>
    <message>
        <source>no such file or folder</source>
        <translation>keine solche Datei, kein solcher Ordner</translation>
    </message>
    <message>
        <source>neither a regular file nor a folder</source>
        <translation>weder eine gewöhnliche Datei noch ein Ordner</translation>
    </message>
    <message>
        <source>the path is empty</source>
        <translation>der Pfad ist leer</translation>
    </message>
    <message>
        <source>the name is no UTF-8 text</source>
        <translation>der Name ist kein UTF-8-Text</translation>
    </message>
    <message>
        <source>the name of its folder is no UTF-8 text</source>
        <translation>der Name des Ordners ist kein UTF-8-Text</translation>
    </message>
    <message>
        <source>named twice with different pages; those named first are converted</source>
        <translation>zweimal mit verschiedenen Seiten genannt; die zuerst genannten werden umgewandelt</translation>
    </message>
    <message>
        <source>it is no file of this computer</source>
        <translation>keine Datei dieses Computers</translation>
    </message>
    <message>
        <source>no regular file is there</source>
        <translation>dort ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>%1 bytes are too many for a list</source>
        <translation>%1 Bytes sind zu viel für eine Liste</translation>
    </message>
    <message>
        <source>the text is not UTF-8</source>
        <translation>der Text ist nicht UTF-8</translation>
    </message>
    <message>
        <source>The settings in %1 cannot be read: %2. They are kept in %3; the defaults are used.</source>
        <translation>Die Einstellungen in %1 lassen sich nicht lesen: %2. Sie sind in %3 aufbewahrt; es gelten die Voreinstellungen.</translation>
    </message>
    <message>
        <source>The settings in %1 cannot be read: %2. They cannot be put aside either, so that no settings are saved.</source>
        <translation>Die Einstellungen in %1 lassen sich nicht lesen: %2. Sie lassen sich auch nicht beiseitelegen, deshalb werden keine Einstellungen gespeichert.</translation>
    </message>
    <message>
        <source>The settings cannot be saved in %1: %2.</source>
        <translation>Die Einstellungen lassen sich nicht in %1 speichern: %2.</translation>
    </message>
    <message>
        <source>it is too long</source>
        <translation>sie ist zu lang</translation>
    </message>
    <message>
        <source>it is no file</source>
        <translation>es ist keine Datei</translation>
    </message>
    <message>
        <source>it holds no object</source>
        <translation>sie enthält kein Objekt</translation>
    </message>
    <message>
        <source>it is no regular file</source>
        <translation>keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>the file is empty</source>
        <translation>die Datei ist leer</translation>
    </message>
    <message>
        <source>it is no TIFF file</source>
        <translation>keine TIFF-Datei</translation>
    </message>
    <message>
        <source>it is no PDF document that can be opened</source>
        <translation>kein PDF-Dokument, das sich öffnen lässt</translation>
    </message>
    <message>
        <source>the file has no page</source>
        <translation>die Datei hat keine Seite</translation>
    </message>
    <message>
        <source>the file ends within its header</source>
        <translation>die Datei endet in ihrem Kopf</translation>
    </message>
    <message>
        <source>the file ends within the directory of page %1</source>
        <translation>die Datei endet im Verzeichnis von Seite %1</translation>
    </message>
    <message>
        <source>the first directory lies beyond the end of the file</source>
        <translation>das erste Verzeichnis liegt hinter dem Ende der Datei</translation>
    </message>
    <message>
        <source>the first directory is damaged</source>
        <translation>das erste Verzeichnis ist beschädigt</translation>
    </message>
    <message>
        <source>the chain of pages leads out of the file after page %1</source>
        <translation>die Kette der Seiten führt nach Seite %1 aus der Datei hinaus</translation>
    </message>
    <message>
        <source>the directory after page %1 is damaged</source>
        <translation>das Verzeichnis nach Seite %1 ist beschädigt</translation>
    </message>
    <message>
        <source>the chain of pages leads back to page %1 after page %2</source>
        <translation>die Kette der Seiten führt nach Seite %2 zu Seite %1 zurück</translation>
    </message>
    <message>
        <source>the directory after page %1 overlaps that of page %2</source>
        <translation>das Verzeichnis nach Seite %1 überschneidet das von Seite %2</translation>
    </message>
    <message>
        <source>the file has more than %1 pages</source>
        <translation>die Datei hat mehr als %1 Seiten</translation>
    </message>
    <message>
        <source>the search for pages was stopped after page %1</source>
        <translation>die Suche nach Seiten wurde nach Seite %1 beendet</translation>
    </message>
    <message>
        <source>the directory of the page cannot be read</source>
        <translation>das Verzeichnis der Seite lässt sich nicht lesen</translation>
    </message>
    <message>
        <source>the directory of the page is damaged</source>
        <translation>das Verzeichnis der Seite ist beschädigt</translation>
    </message>
    <message>
        <source>the directory that was written cannot be read</source>
        <translation>das geschriebene Verzeichnis lässt sich nicht lesen</translation>
    </message>
    <message>
        <source>the file could not be opened</source>
        <translation>die Datei ließ sich nicht öffnen</translation>
    </message>
    <message>
        <source>the file has no page %1 any more, its last one is %2</source>
        <translation>die Datei hat keine Seite %1 mehr, ihre letzte ist %2</translation>
    </message>
    <message>
        <source>the file has %1 pages now, %2 were counted before the run</source>
        <translation>die Datei hat jetzt %1 Seiten, vor dem Lauf wurden %2 gezählt</translation>
    </message>
    <message>
        <source>the TIFF encoder did not start</source>
        <translation>der TIFF-Encoder ist nicht angelaufen</translation>
    </message>
    <message>
        <source>the image size %1 x %2 is not supported</source>
        <translation>die Bildgröße %1 x %2 wird nicht unterstützt</translation>
    </message>
    <message>
        <source>%1 bits a sample are not supported</source>
        <translation>%1 Bits je Abtastwert werden nicht unterstützt</translation>
    </message>
    <message>
        <source>the image has no samples</source>
        <translation>das Bild hat keine Abtastwerte</translation>
    </message>
    <message>
        <source>the tile size is missing</source>
        <translation>die Größe der Kacheln fehlt</translation>
    </message>
    <message>
        <source>compression %1 is not supported</source>
        <translation>die Kompression %1 wird nicht unterstützt</translation>
    </message>
    <message>
        <source>its JBIG data are damaged</source>
        <translation>die JBIG-Daten sind beschädigt</translation>
    </message>
    <message>
        <source>its JBIG data do not have the size of the page</source>
        <translation>die JBIG-Daten haben nicht die Größe der Seite</translation>
    </message>
    <message>
        <source>it is too large for a page of JBIG data</source>
        <translation>zu groß für eine Seite mit JBIG-Daten</translation>
    </message>
    <message>
        <source>tile %1 of the page lies in the header of the file</source>
        <translation>Kachel %1 der Seite liegt im Kopf der Datei</translation>
    </message>
    <message>
        <source>strip %1 of the page lies in the header of the file</source>
        <translation>Streifen %1 der Seite liegt im Kopf der Datei</translation>
    </message>
    <message>
        <source>tile %1 of the page is smaller than its rows</source>
        <translation>Kachel %1 der Seite ist kleiner als ihre Zeilen</translation>
    </message>
    <message>
        <source>strip %1 of the page is smaller than its rows</source>
        <translation>Streifen %1 der Seite ist kleiner als seine Zeilen</translation>
    </message>
    <message>
        <source>the table of its strips is damaged</source>
        <translation>die Tabelle der Streifen ist beschädigt</translation>
    </message>
    <message>
        <source>the table of its strips is too short, %1 of %2</source>
        <translation>die Tabelle der Streifen ist zu kurz, %1 von %2</translation>
    </message>
    <message>
        <source>its pixels lie beyond the end of the file</source>
        <translation>die Pixel liegen hinter dem Ende der Datei</translation>
    </message>
    <message>
        <source>its tags announce more than %1 MiB of values</source>
        <translation>die Tags kündigen mehr als %1 MiB an Werten an</translation>
    </message>
    <message>
        <source>its rows of %1 pixels are too long</source>
        <translation>die Zeilen von %1 Pixeln sind zu lang</translation>
    </message>
    <message>
        <source>its rows of %1 pixels, once it is turned, are too long</source>
        <translation>gedreht sind die Zeilen von %1 Pixeln zu lang</translation>
    </message>
    <message>
        <source>the page has no pixel data</source>
        <translation>die Seite hat keine Pixeldaten</translation>
    </message>
    <message>
        <source>it announces %1 x %2 pixels, more than its %3 bytes of data can hold</source>
        <translation>angekündigt sind %1 x %2 Pixel, mehr als die %3 Bytes an Daten enthalten können</translation>
    </message>
    <message>
        <source>its %1 bytes of data announce %2 x %3 pixels; a page of more than 1 GiB needs a byte for every 1000</source>
        <translation>%1 Bytes an Daten kündigen %2 x %3 Pixel an; eine Seite über 1 GiB braucht ein Byte je 1000</translation>
    </message>
    <message>
        <source>the colour map is missing</source>
        <translation>die Farbtabelle fehlt</translation>
    </message>
    <message>
        <source>the colour map is missing or of another length</source>
        <translation>die Farbtabelle fehlt oder hat eine andere Länge</translation>
    </message>
    <message>
        <source>%1 samples a pixel do not fit its photometric interpretation %2</source>
        <translation>%1 Abtastwerte je Pixel passen nicht zur photometrischen Deutung %2</translation>
    </message>
    <message>
        <source>a colour map of %1 bits is not supported</source>
        <translation>eine Farbtabelle mit %1 Bits wird nicht unterstützt</translation>
    </message>
    <message>
        <source>inks other than CMYK are not supported</source>
        <translation>andere Druckfarben als CMYK werden nicht unterstützt</translation>
    </message>
    <message>
        <source>L*a*b* with %1 bits a sample is not supported</source>
        <translation>L*a*b* mit %1 Bits je Abtastwert wird nicht unterstützt</translation>
    </message>
    <message>
        <source>photometric interpretation %1 is not supported</source>
        <translation>die photometrische Deutung %1 wird nicht unterstützt</translation>
    </message>
    <message>
        <source>its L*a*b* colours cannot be converted</source>
        <translation>die L*a*b*-Farben lassen sich nicht umrechnen</translation>
    </message>
    <message>
        <source>one colour for 4 x 4 pixels is not supported</source>
        <translation>eine Farbe für 4 x 4 Pixel wird nicht unterstützt</translation>
    </message>
    <message>
        <source>strips without data are not supported for such a page</source>
        <translation>Streifen ohne Daten werden bei einer solchen Seite nicht unterstützt</translation>
    </message>
    <message>
        <source>its strips or tiles are too large</source>
        <translation>die Streifen oder Kacheln sind zu groß</translation>
    </message>
    <message>
        <source>its tiles are too large</source>
        <translation>die Kacheln sind zu groß</translation>
    </message>
    <message>
        <source>its strips are too large</source>
        <translation>die Streifen sind zu groß</translation>
    </message>
    <message>
        <source>a tile width of %1 is not supported</source>
        <translation>eine Kachelbreite von %1 wird nicht unterstützt</translation>
    </message>
    <message>
        <source>the pixels cannot be decoded</source>
        <translation>die Pixel lassen sich nicht decodieren</translation>
    </message>
    <message>
        <source>predictor %1 is not supported for its samples</source>
        <translation>der Prädiktor %1 wird für die Abtastwerte nicht unterstützt</translation>
    </message>
    <message>
        <source>%1 % of its samples lie outside of 0 to 1, which is shown</source>
        <translation>%1 % der Abtastwerte liegen außerhalb von 0 bis 1, und nur das wird gezeigt</translation>
    </message>
    <message>
        <source>its samples lie between %1 and %2, and %3 to %4 is shown: fewer than 16 levels are left</source>
        <translation>die Abtastwerte liegen zwischen %1 und %2, gezeigt wird %3 bis %4: weniger als 16 Stufen bleiben</translation>
    </message>
    <message>
        <source>samples of format %1 and %2 bits are not supported</source>
        <translation>Abtastwerte des Formats %1 mit %2 Bits werden nicht unterstützt</translation>
    </message>
    <message>
        <source>%1 of its %2 %3 has no data in the file and is filled with %4</source>
        <translation>%1 von %2 %3 hat keine Daten in der Datei und ist mit %4 gefüllt</translation>
    </message>
    <message>
        <source>%1 of its %2 %3 have no data in the file and are filled with %4</source>
        <translation>%1 von %2 %3 haben keine Daten in der Datei und sind mit %4 gefüllt</translation>
    </message>
    <message>
        <source>strips</source>
        <translation>Streifen</translation>
    </message>
    <message>
        <source>tiles</source>
        <translation>Kacheln</translation>
    </message>
    <message>
        <source>out of memory</source>
        <translation>zu wenig Arbeitsspeicher</translation>
    </message>
    <message>
        <source>its strips hold far more than their rows</source>
        <translation>die Streifen enthalten weit mehr als ihre Zeilen</translation>
    </message>
    <message>
        <source>its strips or tiles hold more than their rows; the rest is left out</source>
        <translation>die Streifen oder Kacheln enthalten mehr als ihre Zeilen; der Rest ist ausgelassen</translation>
    </message>
    <message>
        <source>its progressive JPEG data are too large to be looked through</source>
        <translation>die progressiven JPEG-Daten sind zu groß, um sie durchzusehen</translation>
    </message>
    <message>
        <source>its progressive JPEG data lack scans</source>
        <translation>den progressiven JPEG-Daten fehlen Durchgänge</translation>
    </message>
    <message>
        <source>its JPEG data lack restart markers, and pixels with them</source>
        <translation>den JPEG-Daten fehlen Restart-Marken und mit ihnen Pixel</translation>
    </message>
    <message>
        <source>its JPEG data go on behind the last pixels; some of them may be damaged</source>
        <translation>die JPEG-Daten gehen hinter den letzten Pixeln weiter; manche davon können beschädigt sein</translation>
    </message>
    <message>
        <source>its Deflate data are damaged</source>
        <translation>die Deflate-Daten sind beschädigt</translation>
    </message>
    <message>
        <source>its Deflate data end before its last row</source>
        <translation>die Deflate-Daten enden vor der letzten Zeile</translation>
    </message>
    <message>
        <source>its PackBits data end before its last row</source>
        <translation>die PackBits-Daten enden vor der letzten Zeile</translation>
    </message>
    <message>
        <source>a page of %1 slices in depth is not supported</source>
        <translation>eine Seite mit %1 Schichten in der Tiefe wird nicht unterstützt</translation>
    </message>
    <message>
        <source>the size of its strip is 0 in the file; as many bytes as its rows need were taken</source>
        <translation>die Größe des Streifens ist in der Datei 0; gelesen sind so viele Bytes, wie die Zeilen brauchen</translation>
    </message>
    <message>
        <source>its resolution is not known; %1 dpi were expected</source>
        <translation>die Auflösung ist nicht bekannt; erwartet waren %1 dpi</translation>
    </message>
    <message>
        <source>its resolution is %1 x %2 dpi; %3 were expected</source>
        <translation>die Auflösung ist %1 x %2 dpi; erwartet waren %3</translation>
    </message>
    <message>
        <source>its colours are not converted to sRGB, since its ICC profile is broken or not for them</source>
        <translation>die Farben sind nicht in sRGB umgerechnet, da das ICC-Profil beschädigt ist oder nicht zu ihnen passt</translation>
    </message>
    <message>
        <source>1 row of the fax is damaged; what is lost of it is white</source>
        <translation>1 Zeile des Fax ist beschädigt; was davon verloren ist, ist weiß</translation>
    </message>
    <message>
        <source>%1 rows of the fax are damaged; what is lost of them is white</source>
        <translation>%1 Zeilen des Fax sind beschädigt; was davon verloren ist, ist weiß</translation>
    </message>
    <message>
        <source>a page of %1 x %2 pixels is too large for %3</source>
        <translation>eine Seite von %1 x %2 Pixeln ist zu groß für %3</translation>
    </message>
    <message>
        <source>an ICC profile of %1 bytes is too large for JPEG</source>
        <translation>ein ICC-Profil von %1 Bytes ist zu groß für JPEG</translation>
    </message>
    <message>
        <source>a broken colour profile, which %1 cannot hold, is dropped</source>
        <translation>ein beschädigtes Farbprofil, das %1 nicht fassen kann, fällt weg</translation>
    </message>
    <message>
        <source>the colour profile, which %1 cannot hold, is dropped; --srgb converts the colours</source>
        <translation>das Farbprofil, das %1 nicht fassen kann, fällt weg; „Farben in sRGB umrechnen“ rechnet die Farben um</translation>
    </message>
    <message>
        <source>the colour profile &apos;%1&apos;, which %2 cannot hold, is dropped; --srgb converts the colours</source>
        <translation>das Farbprofil „%1“, das %2 nicht fassen kann, fällt weg; „Farben in sRGB umrechnen“ rechnet die Farben um</translation>
    </message>
    <message>
        <source>%1 source has a colour profile other than sRGB, which %2 files cannot hold: %3; --srgb converts the colours</source>
        <translation>%1 Quelle hat ein anderes Farbprofil als sRGB, das %2-Dateien nicht fassen können: %3; „Farben in sRGB umrechnen“ rechnet die Farben um</translation>
    </message>
    <message>
        <source>%1 sources have a colour profile other than sRGB, which %2 files cannot hold: %3; --srgb converts the colours</source>
        <translation>%1 Quellen haben ein anderes Farbprofil als sRGB, das %2-Dateien nicht fassen können: %3; „Farben in sRGB umrechnen“ rechnet die Farben um</translation>
    </message>
    <message>
        <source>written without compression, since a fax compression is for pages one bit deep; --bilevel makes them so</source>
        <translation>ohne Kompression geschrieben, da eine Fax-Kompression für Seiten mit einem Bit je Pixel ist; „Schwarz-weiß“ macht sie dazu</translation>
    </message>
    <message>
        <source>%1 of its samples, which are neither colour nor alpha, are left out</source>
        <translation>%1 der Abtastwerte, die weder Farbe noch Alpha sind, sind ausgelassen</translation>
    </message>
    <message>
        <source>%1 tag left out: %2</source>
        <translation>%1 Tag ausgelassen: %2</translation>
    </message>
    <message>
        <source>%1 tags left out: %2</source>
        <translation>%1 Tags ausgelassen: %2</translation>
    </message>
    <message>
        <source>%1 tag would be lost: %2</source>
        <translation>%1 Tag verloren ginge: %2</translation>
    </message>
    <message>
        <source>%1 tags would be lost: %2</source>
        <translation>%1 Tags verloren gingen: %2</translation>
    </message>
    <message>
        <source>%1 tag left behind, for which the format has no place: %2</source>
        <translation>%1 Tag zurückgeblieben, für den das Format keinen Platz hat: %2</translation>
    </message>
    <message>
        <source>%1 tags left behind, for which the format has no place: %2</source>
        <translation>%1 Tags zurückgeblieben, für die das Format keinen Platz hat: %2</translation>
    </message>
    <message>
        <source>there is no writer for the extension &quot;%1&quot;</source>
        <translation>für die Endung „%1“ gibt es keinen Schreiber</translation>
    </message>
    <message>
        <source>the pixels changed while they were read</source>
        <translation>die Pixel haben sich während des Lesens geändert</translation>
    </message>
    <message>
        <source>the page cannot be encoded</source>
        <translation>die Seite lässt sich nicht codieren</translation>
    </message>
    <message>
        <source>no page could be read</source>
        <translation>keine Seite ließ sich lesen</translation>
    </message>
    <message>
        <source>the file would be larger than 4 GB</source>
        <translation>die Datei würde größer als 4 GB</translation>
    </message>
    <message>
        <source>the file is full</source>
        <translation>die Datei ist voll</translation>
    </message>
    <message>
        <source>a strip is missing or reaches past the end of the file</source>
        <translation>ein Streifen fehlt oder reicht über das Ende der Datei hinaus</translation>
    </message>
    <message>
        <source>its header is damaged</source>
        <translation>der Kopf ist beschädigt</translation>
    </message>
    <message>
        <source>it is not as long as its rows</source>
        <translation>sie ist nicht so lang wie ihre Zeilen</translation>
    </message>
    <message>
        <source>%1 bytes lie behind its end</source>
        <translation>%1 Bytes liegen hinter dem Ende</translation>
    </message>
    <message>
        <source>it holds several images</source>
        <translation>sie enthält mehrere Bilder</translation>
    </message>
    <message>
        <source>it holds no image</source>
        <translation>sie enthält kein Bild</translation>
    </message>
    <message>
        <source>its pixels have no colour</source>
        <translation>die Pixel haben keine Farbe</translation>
    </message>
    <message>
        <source>it has %1 pixels in place of %2</source>
        <translation>sie hat %1 Pixel statt %2</translation>
    </message>
    <message>
        <source>it has %1 pages in place of %2</source>
        <translation>sie hat %1 Seiten statt %2</translation>
    </message>
    <message>
        <source>its samples are of another kind</source>
        <translation>die Abtastwerte sind von anderer Art</translation>
    </message>
    <message>
        <source>its pixels are not those of the page</source>
        <translation>die Pixel sind nicht die der Seite</translation>
    </message>
    <message>
        <source>the file ends early</source>
        <translation>die Datei endet zu früh</translation>
    </message>
    <message>
        <source>Unable to Open File!</source>
        <translation>Datei lässt sich nicht öffnen!</translation>
    </message>
    <message>
        <source>Unable to save page!</source>
        <translation>Seite lässt sich nicht speichern!</translation>
    </message>
    <message>
        <source>no page is left to convert, since those asked for are thumbnails or masks</source>
        <translation>keine Seite bleibt zum Umwandeln, da die gewünschten Vorschaubilder oder Masken sind</translation>
    </message>
    <message>
        <source>page %1, %2</source>
        <translation>Seite %1, %2</translation>
    </message>
    <message>
        <source>%1 asked for, the file has %2</source>
        <translation>%1 gewünscht, die Datei hat %2</translation>
    </message>
    <message>
        <source>page %1</source>
        <translation>Seite %1</translation>
    </message>
    <message>
        <source>pages %1, %2</source>
        <translation>Seiten %1, %2</translation>
    </message>
    <message>
        <source>pages %1</source>
        <translation>Seiten %1</translation>
    </message>
    <message>
        <source>%1 and %2 more</source>
        <translation>%1 und %2 weitere</translation>
    </message>
    <message>
        <source>%1 leads to the source itself, which a single page must not replace</source>
        <translation>%1 führt zur Quelle selbst, die eine einzelne Seite nicht ersetzen darf</translation>
    </message>
    <message>
        <source>the file is kept as it is, since it has changed since its pages were read</source>
        <translation>die Datei bleibt, wie sie ist, da sie sich geändert hat, seit ihre Seiten gelesen wurden</translation>
    </message>
    <message>
        <source>the file has changed while its pages were read, which may be old ones, new ones or parts of both</source>
        <translation>die Datei hat sich geändert, während ihre Seiten gelesen wurden; es können alte, neue oder Teile von beiden sein</translation>
    </message>
    <message>
        <source>the file is kept as it is, since not all of its pages could be gathered to replace it</source>
        <translation>die Datei bleibt, wie sie ist, da sich nicht alle ihre Seiten zusammentragen ließen, um sie zu ersetzen</translation>
    </message>
    <message>
        <source>the file is kept as it is, since its pixels would be lost to the changed ones; an output folder may help</source>
        <translation>die Datei bleibt, wie sie ist, da ihre Pixel an die geänderten verloren gingen; ein Ausgabeordner kann helfen</translation>
    </message>
    <message>
        <source>the file is kept as it is, since what its pages say of themselves would be lost; an output folder may help</source>
        <translation>die Datei bleibt, wie sie ist, da die Metadaten ihrer Seiten verloren gingen; ein Ausgabeordner kann helfen</translation>
    </message>
    <message>
        <source>the file is kept as it is, since not all of its pixels are sure: %1</source>
        <translation>die Datei bleibt, wie sie ist, da nicht alle ihre Pixel sicher sind: %1</translation>
    </message>
    <message>
        <source>the file is kept as it is, since %1</source>
        <translation>die Datei bleibt, wie sie ist, da %1</translation>
    </message>
    <message>
        <source>the log could not be written: %1</source>
        <translation>das Protokoll ließ sich nicht schreiben: %1</translation>
    </message>
    <message>
        <source>the record could not be written: %1</source>
        <translation>der Nachweis ließ sich nicht schreiben: %1</translation>
    </message>
    <message>
        <source>the report could not be written: %1</source>
        <translation>der Bericht ließ sich nicht schreiben: %1</translation>
    </message>
    <message>
        <source>it could not be written, since there is no log to put it beside</source>
        <translation>ließ sich nicht schreiben, da es kein Protokoll gibt, neben das es käme</translation>
    </message>
    <message>
        <source>the log cannot be read back: %1</source>
        <translation>das Protokoll lässt sich nicht zurücklesen: %1</translation>
    </message>
    <message>
        <source>the run could not be planned: %1</source>
        <translation>der Lauf ließ sich nicht planen: %1</translation>
    </message>
    <message>
        <source>the outputs can take %1 there, %2 are free</source>
        <translation>die Ausgaben können dort %1 brauchen, %2 sind frei</translation>
    </message>
    <message>
        <source>name &apos;%1&apos; %2</source>
        <translation>Name „%1“ %2</translation>
    </message>
    <message>
        <source>holds a slash</source>
        <translation>enthält einen Schrägstrich</translation>
    </message>
    <message>
        <source>is no UTF-8 text</source>
        <translation>ist kein UTF-8-Text</translation>
    </message>
    <message>
        <source>has a &apos;}&apos; without a &apos;{&apos;</source>
        <translation>hat ein „}“ ohne „{“</translation>
    </message>
    <message>
        <source>has a &apos;{&apos; without a &apos;}&apos;</source>
        <translation>hat ein „{“ ohne „}“</translation>
    </message>
    <message>
        <source>has {%1}, which is none of {%2}</source>
        <translation>hat {%1}, was keines von {%2} ist</translation>
    </message>
    <message>
        <source>has {%1}; digits from 1 to %2 go with {page}, {pages} and {n}</source>
        <translation>hat {%1}; Ziffern von 1 bis %2 gehen mit {page}, {pages} und {n}</translation>
    </message>
    <message>
        <source>name &apos;%1&apos; would be empty, &apos;.&apos; or &apos;..&apos;; {stem} or {n} make it a name</source>
        <translation>Name „%1“ wäre leer, „.“ oder „..“; {stem} oder {n} machen einen Namen daraus</translation>
    </message>
    <message>
        <source>pages &apos;%1&apos; has &apos;%2&apos;, which is none of 3, 3-5, 3- and -1 (from 1 on, or from -1 back)</source>
        <translation>Seiten „%1“ hat „%2“, was keines von 3, 3-5, 3- und -1 ist (ab 1, oder ab -1 rückwärts)</translation>
    </message>
    <message>
        <source>separator &apos;%1&apos; holds a slash</source>
        <translation>Trennzeichen „%1“ enthält einen Schrägstrich</translation>
    </message>
    <message>
        <source>separator &apos;%1&apos; is no UTF-8 text</source>
        <translation>Trennzeichen „%1“ ist kein UTF-8-Text</translation>
    </message>
    <message>
        <source>digits &apos;%1&apos; is neither auto nor a number from 1 to 9</source>
        <translation>Ziffern „%1“ ist weder auto noch eine Zahl von 1 bis 9</translation>
    </message>
    <message>
        <source>%1 &apos;%2&apos; is none of %3</source>
        <translation>%1 „%2“ ist keines von %3</translation>
    </message>
    <message>
        <source>%1 &apos;%2&apos; is no number from %3 to %4</source>
        <translation>%1 „%2“ ist keine Zahl von %3 bis %4</translation>
    </message>
    <message>
        <source>threshold of %1</source>
        <translation>Schwelle von %1</translation>
    </message>
    <message>
        <source>preset %1: %2</source>
        <translation>Vorgabe %1: %2</translation>
    </message>
    <message>
        <source>%1 is neither true nor false</source>
        <translation>%1 ist weder true noch false</translation>
    </message>
    <message>
        <source>%1 is neither a text nor a number</source>
        <translation>%1 ist weder ein Text noch eine Zahl</translation>
    </message>
    <message>
        <source>%1 at byte %2</source>
        <translation>%1 bei Byte %2</translation>
    </message>
    <message>
        <source>it has no object &quot;options&quot;</source>
        <translation>sie hat kein Objekt „options“</translation>
    </message>
    <message>
        <source>there is no option &apos;%1&apos;</source>
        <translation>eine Option „%1“ gibt es nicht</translation>
    </message>
    <message>
        <source>it is larger than a preset can be</source>
        <translation>sie ist größer, als eine Vorgabe sein kann</translation>
    </message>
    <message>
        <source>the name of the preset is empty</source>
        <translation>der Name der Vorgabe ist leer</translation>
    </message>
    <message>
        <source>the preset %1 comes with the program</source>
        <translation>die Vorgabe %1 kommt mit dem Programm</translation>
    </message>
    <message>
        <source>the folder %1 cannot be made: %2</source>
        <translation>der Ordner %1 lässt sich nicht anlegen: %2</translation>
    </message>
    <message>
        <source>preset &apos;%1&apos; is no file and none of %2</source>
        <translation>Vorgabe „%1“ ist keine Datei und keine von %2</translation>
    </message>
    <message>
        <source>Legal production (G4, 300 dpi, one file a page, numbered)</source>
        <translation>Akten (G4, 300 dpi, eine Datei je Seite, nummeriert)</translation>
    </message>
    <message>
        <source>Web (JPEG 8, sRGB)</source>
        <translation>Web (JPEG 8, sRGB)</translation>
    </message>
    <message>
        <source>Archive (TIFF LZW, verified)</source>
        <translation>Archiv (TIFF LZW, geprüft)</translation>
    </message>
    <message>
        <source>its compression could not be kept</source>
        <translation>ihre Kompression konnte nicht behalten werden</translation>
    </message>
</context>
<context>
    <name>pagestack::RecentFolders</name>
    <message>
        <source>&amp;Forget These Folders</source>
        <translation>Diese Ordner &amp;vergessen</translation>
    </message>
</context>
<context>
    <name>pagestack::RowStatus</name>
    <message>
        <source>Missing</source>
        <translation>Fehlt</translation>
    </message>
    <message>
        <source>Unreadable</source>
        <translation>Unlesbar</translation>
    </message>
    <message>
        <source>Waiting</source>
        <translation>Wartet</translation>
    </message>
    <message>
        <source>Page %1 of %2</source>
        <translation>Seite %1 von %2</translation>
    </message>
    <message>
        <source>Converting</source>
        <translation>Umwandlung</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Misslungen</translation>
    </message>
    <message>
        <source>Not reached</source>
        <translation>Nicht erreicht</translation>
    </message>
</context>
<context>
    <name>pagestack::RunControl</name>
    <message numerus="yes">
        <source>and %n more</source>
        <translation>
            <numerusform>und %n weitere</numerusform>
            <numerusform>und %n weitere</numerusform>
        </translation>
    </message>
    <message>
        <source>Some outputs of this run would replace each other or a file of the list:</source>
        <translation>Einige Ausgaben würden einander oder eine Datei der Liste ersetzen:</translation>
    </message>
    <message>
        <source>%1 would be written by several pages of %2</source>
        <translation>%1 käme von mehreren Seiten von %2</translation>
    </message>
    <message>
        <source>%1 would be written by %2 and by %3</source>
        <translation>%1 käme von %2 und von %3</translation>
    </message>
    <message>
        <source>%1 would be replaced by output of %2</source>
        <translation>%1 würde durch die Ausgabe von %2 ersetzt</translation>
    </message>
    <message>
        <source>With a number, %1 of %2 is written as %3.</source>
        <translation>Mit Nummer heißt %1 von %2 dann %3.</translation>
    </message>
    <message>
        <source>beside their sources</source>
        <translation>neben ihren Quellen</translation>
    </message>
    <message>
        <source>in %1</source>
        <translation>in %1</translation>
    </message>
    <message>
        <source>, such as %1</source>
        <translation>, etwa %1</translation>
    </message>
    <message>
        <source>, %1 at most</source>
        <translation>, höchstens %1</translation>
    </message>
    <message>
        <source>A file of this run exists already:</source>
        <translation>Eine Datei dieses Laufs gibt es schon:</translation>
    </message>
    <message>
        <source>%1 files of this run exist already:</source>
        <translation>%1 Dateien dieses Laufs gibt es schon:</translation>
    </message>
    <message>
        <source>%1, which is the source itself</source>
        <translation>%1, die Quelle selbst</translation>
    </message>
    <message>
        <source>Stop the conversion? Images that are written stay.</source>
        <translation>Die Umwandlung beenden? Geschriebene Bilder bleiben.</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Number</source>
        <translation>Nummerieren</translation>
    </message>
    <message>
        <source>Skip</source>
        <translation>Auslassen</translation>
    </message>
    <message>
        <source>Replace</source>
        <translation>Ersetzen</translation>
    </message>
    <message>
        <source>Number the later ones</source>
        <translation>Die späteren nummerieren</translation>
    </message>
    <message>
        <source>Keep folder structure</source>
        <translation>Ordnerstruktur erhalten</translation>
    </message>
    <message>
        <source>A conversion is under way. Stop it and quit? Images that are written stay.</source>
        <translation>Eine Umwandlung läuft. Beenden und schließen? Geschriebene Bilder bleiben.</translation>
    </message>
    <message>
        <source>Stop and Quit</source>
        <translation>Beenden und schließen</translation>
    </message>
    <message>
        <source>Keep Converting</source>
        <translation>Weiter umwandeln</translation>
    </message>
    <message numerus="yes">
        <source>%Ln file(s)</source>
        <translation>
            <numerusform>%Ln Datei</numerusform>
            <numerusform>%Ln Dateien</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %Ln page(s)</source>
        <translation>
            <numerusform>, %Ln Seite</numerusform>
            <numerusform>, %Ln Seiten</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>: %Ln image(s) </source>
        <translation>
            <numerusform>: %Ln Bild </numerusform>
            <numerusform>: %Ln Bilder </numerusform>
        </translation>
    </message>
    <message>
        <source>Save the list of problems as a text with tabs:</source>
        <translation>Liste der Probleme als Text mit Tabulatoren sichern:</translation>
    </message>
    <message>
        <source>Problems.txt</source>
        <translation>Probleme.txt</translation>
    </message>
</context>
<context>
    <name>pagestack::RunOutcome</name>
    <message>
        <source>Warning: %1</source>
        <translation>Warnung: %1</translation>
    </message>
    <message>
        <source>Page %1: %2</source>
        <translation>Seite %1: %2</translation>
    </message>
    <message>
        <source>and more</source>
        <translation>und mehr</translation>
    </message>
    <message>
        <source>Cancelled when %1 of %2 pages were done.</source>
        <translation>Abgebrochen, als %1 von %2 Seiten fertig waren.</translation>
    </message>
    <message>
        <source>1 image written</source>
        <translation>1 Bild geschrieben</translation>
    </message>
    <message>
        <source>%1 images written</source>
        <translation>%1 Bilder geschrieben</translation>
    </message>
    <message>
        <source>, %1 of %2 files failed</source>
        <translation>, %1 von %2 Dateien misslungen</translation>
    </message>
    <message>
        <source>, %1 of %2 files not finished</source>
        <translation>, %1 von %2 Dateien nicht fertig</translation>
    </message>
    <message>
        <source>, %1 of %2 files left out</source>
        <translation>, %1 von %2 Dateien ausgelassen</translation>
    </message>
</context>
<context>
    <name>pagestack::RunProgress</name>
    <message>
        <source>page %1 of %2</source>
        <translation>Seite %1 von %2</translation>
    </message>
    <message>
        <source>%1 pages/s</source>
        <translation>%1 Seiten/s</translation>
    </message>
    <message>
        <source>a few seconds left</source>
        <translation>noch wenige Sekunden</translation>
    </message>
    <message>
        <source>about %1 left</source>
        <translation>noch etwa %1</translation>
    </message>
</context>
<context>
    <name>pagestack::RunReport</name>
    <message>
        <source>written</source>
        <translation>geschrieben</translation>
    </message>
    <message>
        <source>written with a loss</source>
        <translation>mit Verlust geschrieben</translation>
    </message>
    <message>
        <source>skipped, a file was there</source>
        <translation>übersprungen, eine Datei war da</translation>
    </message>
    <message>
        <source>not written, since its file is not in place</source>
        <translation>nicht geschrieben, da ihre Datei nicht an ihrem Platz ist</translation>
    </message>
    <message>
        <source>failed: the page is not there any more</source>
        <translation>misslungen: die Seite ist nicht mehr da</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>misslungen</translation>
    </message>
    <message>
        <source>Left behind, since the format has no place for it: %1</source>
        <translation>Zurückgeblieben, da das Format keinen Platz dafür hat: %1</translation>
    </message>
    <message>
        <source>Page</source>
        <translation>Seite</translation>
    </message>
    <message>
        <source>Image</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>What happened</source>
        <translation>Was geschah</translation>
    </message>
    <message>
        <source>Ended early</source>
        <translation>Vorzeitig beendet</translation>
    </message>
    <message>
        <source>Cancelled</source>
        <translation>Abgebrochen</translation>
    </message>
    <message>
        <source>Finished with problems</source>
        <translation>Fertig, mit Problemen</translation>
    </message>
    <message>
        <source>Finished</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>en</source>
        <comment>code of the language that this is translated to</comment>
        <translation>de</translation>
    </message>
    <message>
        <source>Images written</source>
        <translation>Geschriebene Bilder</translation>
    </message>
    <message>
        <source>Pages written</source>
        <translation>Geschriebene Seiten</translation>
    </message>
    <message>
        <source>of these with a loss</source>
        <translation>davon mit Verlust</translation>
    </message>
    <message>
        <source>Pages failed</source>
        <translation>Misslungene Seiten</translation>
    </message>
    <message>
        <source>Pages skipped</source>
        <translation>Übersprungene Seiten</translation>
    </message>
    <message>
        <source>Source files</source>
        <translation>Quelldateien</translation>
    </message>
    <message>
        <source>of these with a warning</source>
        <translation>davon mit Warnung</translation>
    </message>
    <message>
        <source>of these not reached</source>
        <translation>davon nicht erreicht</translation>
    </message>
    <message>
        <source>Problems</source>
        <translation>Probleme</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Dateien</translation>
    </message>
</context>
<context>
    <name>pagestack::RunStrip</name>
    <message>
        <source>Details</source>
        <translation>Mehr</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Brings the sheet of the conversion back</source>
        <translation>Zeigt wieder, wie es mit der Umwandlung steht</translation>
    </message>
</context>
<context>
    <name>pagestack::SettingsPane</name>
    <message>
        <source>Set the options of all tabs to their defaults? The output folder stays.</source>
        <translation>Die Optionen aller Seiten zurücksetzen? Der Ausgabeordner bleibt.</translation>
    </message>
    <message>
        <source>Restore Defaults</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Select Output Folder:</source>
        <translation>Ausgabeordner wählen:</translation>
    </message>
</context>
<context>
    <name>pagestack::ShownPixels</name>
    <message>
        <source>, %1 dpi</source>
        <translation>, %1 dpi</translation>
    </message>
    <message>
        <source>, %1 x %2 dpi</source>
        <translation>, %1 x %2 dpi</translation>
    </message>
    <message>
        <source>%1 x %2</source>
        <translation>%1 x %2</translation>
    </message>
</context>
<context>
    <name>pagestack::SleepInhibitor</name>
    <message>
        <source>Files are being converted</source>
        <translation>Dateien werden umgewandelt</translation>
    </message>
</context>
<context>
    <name>pagestack::SortHeader</name>
    <message>
        <source>Reset Columns</source>
        <translation>Spalten zurücksetzen</translation>
    </message>
</context>
<context>
    <name>pagestack::ViewState</name>
    <message>
        <source>&amp;Undo %1</source>
        <translation>&amp;Rückgängig %1</translation>
    </message>
    <message>
        <source>&amp;Redo %1</source>
        <translation>&amp;Wiederholen %1</translation>
    </message>
    <message>
        <source>%1 Total file(s); %2 file selected; Total page count of selected TIFF file(s): %3</source>
        <translation>%1 Dateien; %2 angehakt; Seiten der angehakten: %3</translation>
    </message>
    <message>
        <source>Total Pages TIFF : %1</source>
        <translation>Seiten aller TIFF-Dateien: %1</translation>
    </message>
    <message>
        <source>Not while files are being added, sorted or converted.</source>
        <translation>Nicht während Dateien hinzukommen, sortiert oder umgewandelt werden.</translation>
    </message>
    <message>
        <source>The list is empty.</source>
        <translation>Die Liste ist leer.</translation>
    </message>
    <message>
        <source>No row is highlighted.</source>
        <translation>Keine Zeile ist markiert.</translation>
    </message>
    <message>
        <source>Not while the filter hides rows.</source>
        <translation>Nicht während der Filter Zeilen verbirgt.</translation>
    </message>
    <message>
        <source>The first row is among those highlighted.</source>
        <translation>Die erste Zeile ist unter den markierten.</translation>
    </message>
    <message>
        <source>The last row is among those highlighted.</source>
        <translation>Die letzte Zeile ist unter den markierten.</translation>
    </message>
    <message>
        <source>No page that can be read is ticked.</source>
        <translation>Keine lesbare Seite ist angehakt.</translation>
    </message>
</context>
</TS>
