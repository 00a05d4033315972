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
        <source>Pagestack</source>
        <translation>Pagestack</translation>
    </message>
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
