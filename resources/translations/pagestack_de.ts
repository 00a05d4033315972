<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>AlertPanel</name>
    <message>
        <source>OK</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FileChooser</name>
    <message>
        <source>TIFF files (%1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Text files (%1)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FileTableModel</name>
    <message>
        <source>No page of this file can be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is converted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is left out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Converted when ticked</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Such as 1,3-5,-1 (the last one); F2 or a double click edits it. Empty: what the options say, or all.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FindControl</name>
    <message>
        <source>%1 of %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No file has it</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ImportFiles</name>
    <message>
        <source>Import List</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reads the paths from a text file, one a line</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>From File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Text file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Text file with one path a line</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Chooses the text file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Browse...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Takes the paths from the text below, one a line</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>From Text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replaces the text by the TIFF files that the clipboard lists</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paste from Clipboard</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paths</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>One path a line</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Total Files Found : 0</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Adds the files found to the list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Import</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ImportFilesWindowController</name>
    <message>
        <source>Select Text File To Import:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Total Files Found : %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 duplicate</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n duplicates</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>1 line that is no TIFF file</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n lines that are no TIFF files</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>1 file that does not exist</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n files that do not exist</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please select file to import!</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please paste file(s) path to import!</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No File(s) Found!</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ListCommands</name>
    <message numerus="yes">
        <source>Remove %n File(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Are you sure to remove all file(s)?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Yes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Remove %n Converted File(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Export List To Tab Delimited Text File :</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ListEditor</name>
    <message numerus="yes">
        <source>Tick %n File(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Untick %n File(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Invert Ticks of %n File(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Choose Pages</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Move %n File(s) Up</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Move %n File(s) Down</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Sort</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sort Backwards</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>LoadControl</name>
    <message>
        <source>Select TIFF File(s):</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select folder(s) contains TIFF File(s):</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>In Process...</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Pagestack</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Takes the highlighted rows off the list; no file is deleted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the highlighted files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the highlighted files in the file manager</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show in Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows what the file manager knows of the highlighted files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File Information</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Highlights every row</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Highlights the first row alone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deselect All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Moves the highlighted rows up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Moves the highlighted rows down</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Down</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove Selected Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Empties the list; no file is deleted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove All Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Finds files by name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Highlights the files with this in their names; with a slash, in their paths. What is converted stays as it is.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find files by name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Part of a file name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Files to convert; tick those to convert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Drag TIFF files and folders here</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>0 Total file(s); 0 file selected; Total page count of selected TIFF file(s): 0</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Total Pages TIFF : 0</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Total Time Taken : 0 sec(s) 0/0</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loading files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stops adding files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Converts the pages of the ticked files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Convert Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fil&amp;e</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recent Fo&amp;lders</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edi&amp;t</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Toolbar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Adds TIFF files to the list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Files...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Adds the TIFF files of folders to the list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Folder...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Takes the files of sub-folders too when a folder is added or dropped</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Include sub-folders</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Adds the files that a list of paths names</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Import List...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export List</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saves the list as text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows or hides the settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add &amp;Files...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add F&amp;older...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Shift+O</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Import List...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+I</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Export List...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Convert File&amp;s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Return</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit Pagestack</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About Pagestack</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Z</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Shift+Z</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+A</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Deselect All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Shift+A</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Tick All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+T</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>U&amp;ntick All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Shift+T</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Invert Ticks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Shift+I</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ti&amp;ck Selected Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unti&amp;ck Selected Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>In&amp;vert Ticks of Selected Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Re&amp;move Selected Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove A&amp;ll Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move U&amp;p</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Do&amp;wn</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>O&amp;pen File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sho&amp;w in Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+R</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File I&amp;nformation</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Alt+Return</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Find...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+F</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Show Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+,</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Minimize</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+M</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pagestack Window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+0</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pagestack Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>F1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pagestack on the Web</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PagestackAppDelegate</name>
    <message>
        <source>Pagestack %1 turns TIFF files into images.

%2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PresetMenu</name>
    <message>
        <source>Save As...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Import...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The preset %1 cannot be removed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save Preset</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is a preset %1 already.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Import Preset:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export the present options as a preset:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preset</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ProblemList</name>
    <message>
        <source>File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Page</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Problem</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show in List</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Warning: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Process</name>
    <message>
        <source>Pagestack unable able to convert some of the files!<byte value="xd"/>
Please check log for more information.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Process cancelled!</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All files converted successfully.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Total %1 files converted successfully.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ProcessPanel</name>
    <message>
        <source>Converting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Image:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Images:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Progress</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Problems</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Double click: shows the file in the list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the log of this conversion</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View Log</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows what went wrong with which file and page</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show &amp;Problems</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the folder of the images</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show in Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Closes, with a tick at the files only that were not converted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tick Failed Only</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the list of files; the conversion goes on at the bottom of the window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hide Details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Holds the run up after the page in hand, until it is pressed again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pause</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stops when all pages of the file in hand are done</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop After This File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stops after the page in hand</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Looking at what is there...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 written, %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>, %n problem(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source> - finishing the page in hand</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> - finishing the file in hand</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> - paused</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n problem(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>under a second</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancelled</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Finished with problems</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Finished</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n more are in the log only.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Resume</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RecentFolders</name>
    <message>
        <source>Clear</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Forget These Folders</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RunControl</name>
    <message numerus="yes">
        <source>and %n more</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Some outputs of this run would replace each other or a file of the list:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 would be written by several pages of %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 would be written by %2 and by %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 would be replaced by output of %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>With a number, %1 of %2 is written as %3.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>beside their sources</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>in %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n file(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %n page(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>: %n image(s) </source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>, such as %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, %1 at most</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A file of this run exists already:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 files of this run exist already:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, which is the source itself</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop the conversion? Images that are written stay.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No output folder selected, file(s) will be saved in source folder.
Do you want to continue?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Yes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output folder is non-writable!<byte value="xd"/>
Please select writable output folder.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output folder missing or invalid path!<byte value="xd"/>
Please select valid output folder.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Number</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Skip</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Number the later ones</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep folder structure</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A conversion is under way. Stop it and quit? Images that are written stay.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop and Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep Converting</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RunOutcome</name>
    <message>
        <source>Warning: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Page %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>and more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancelled when %1 of %2 pages were done.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 image written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 images written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, %1 of %2 files failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, %1 of %2 files not finished</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RunProgress</name>
    <message>
        <source>page %1 of %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 pages/s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a few seconds left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>about %1 left</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RunStrip</name>
    <message>
        <source>Details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Progress</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Brings the sheet of the conversion back</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SettingsPane</name>
    <message>
        <source>Format</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>For&amp;mat:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The kind of image that is written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>JPEG</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>PNG</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>TIFF</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>BMP</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>GIF</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Files of this format hold no texts, dates, XMP, Exif, GPS or IPTC data: what pages have of these stays behind.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Quality:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Higher keeps more detail and makes larger files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>JPEG quality</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>100%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Smaller files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Better images</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Compressio&amp;n:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How the pixels of TIFF files are packed; the two CCITT kinds are for black and white pages</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>None</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CCITT Group 3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CCITT Group 4</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>LZW</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>PackBits</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Off: all pages of a source file go into one TIFF file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>One file for each pa&amp;ge</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File names</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sep&amp;arator:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Text between the name of the source file and the page number</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save images in fo&amp;lder:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The folder that takes the images</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder of the source file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Selects or creates the output folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Choose...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folders that took images before</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>With no folder here, images are saved beside their source files.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Starts with this folder the next time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use as default folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the output folder when a conversion has ended</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open folder when done</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Takes the converted files off the list when the progress panel is closed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Re&amp;move converted files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>More</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What the first image of the ticked files will be called</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Named sets of all options: choose, save, import, export</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Presets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sets the options of all tabs as they are at first; the folder stays</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restore Defaults</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the guide</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About these settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set the options of all tabs to their defaults? The output folder stays.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select Output Folder:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SleepInhibitor</name>
    <message>
        <source>Files are being converted</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ViewState</name>
    <message>
        <source>&amp;Undo %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Redo %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 Total file(s); %2 file selected; Total page count of selected TIFF file(s): %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Total Pages TIFF : %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>pagestack::ConversionOptions</name>
    <message>
        <source>As many as the last page has</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>output format, default jpeg; also jpg and tif, in any case</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>JPEG quality in tenths, default 10</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>TIFF compression, default none</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>TIFF: one file a page instead of one a source</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>stands between name and page number, default empty; &apos;:&apos; becomes &apos;-&apos;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>repeats the folders of the sources below the output folder: those below a folder that is given, or below the deepest one that holds all that is given</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep folder structure</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folders and names</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>page numbers have at least so many digits, default 1; auto: as many as that of the source&apos;s last page</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Digits of page numbers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>what outputs are called, without the extension, default &apos;%1&apos;; also {pages} the source has, {folder} of the source, {parent} of that folder and {n}, the running number of the output; {n:6}, {page:6} and {pages:6} have at least six digits; {sep} and {page} are empty in a file that keeps all pages together; &apos;:&apos; becomes &apos;-&apos;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Names of outputs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the pages of each source that are converted, from 1 on, such as 1,3-5,-1: 3- is the third and all behind it, -1 the last, -3- the last three, 2--2 all but the first and the last; a page that a source lacks is an error of that source</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pages to convert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pages</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>all; 1,3-5,-1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>leaves out thumbnails and masks, pages whose SubfileType says so; page numbers stay</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Leave out thumbnails and masks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>JPEG, PNG, TIFF: leaves out what pages say of themselves (texts, dates, XMP, Exif, GPS, IPTC); colour profile and resolution stay</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Leave out metadata</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>warns of pages whose resolution is not N pixels an inch; they are converted as they are</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Expected resolution</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>any; 300 for 300 dpi</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Black and white</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Colours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>By a threshold</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>By dithering</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Threshold</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>128, of 1 to 255</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>converts colours to sRGB through the page&apos;s profile, which is then left out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Convert colours to sRGB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>gives outputs the modification time of their source</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep file dates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>reads each output back before it gets its name; one that does not show its page is not saved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Verify outputs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Proof</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>writes a file SHA256SUMS beside the outputs, as &apos;sha256sum -c&apos; reads it; one that is there keeps its lines of other files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Write SHA256SUMS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>writes a record of the run, a JSON document, beside its log</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Write a record of the run</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>pagestack::Dates</name>
    <message>
        <source>Total Time Taken : %1 %2/%3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>0 sec(s)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>pagestack::FileTableModel</name>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pages</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pages to convert</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Type</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Location</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Modified</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Created</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Accessed</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>pagestack::RowStatus</name>
    <message>
        <source>Missing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unreadable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Page %1 of %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Converting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Done</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Warning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not reached</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
