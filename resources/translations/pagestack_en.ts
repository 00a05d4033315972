<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="en">
<context>
    <name>pagestack::Addition</name>
    <message numerus="yes">
        <source>%Ln added</source>
        <translation>
            <numerusform>%Ln added</numerusform>
            <numerusform>%Ln added</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln already there</source>
        <translation>
            <numerusform>%Ln already there</numerusform>
            <numerusform>%Ln already there</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln left out</source>
        <translation>
            <numerusform>%Ln left out</numerusform>
            <numerusform>%Ln left out</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln sub-folder(s) not searched</source>
        <translation>
            <numerusform>%Ln sub-folder not searched</numerusform>
            <numerusform>%Ln sub-folders not searched</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln file(s) not named .tif or .tiff</source>
        <translation>
            <numerusform>%Ln file not named .tif or .tiff</numerusform>
            <numerusform>%Ln files not named .tif or .tiff</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>and %Ln more</source>
        <translation>
            <numerusform>and %Ln more</numerusform>
            <numerusform>and %Ln more</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln line(s) that are no path of a file</source>
        <translation>
            <numerusform>%Ln line that is no path of a file</numerusform>
            <numerusform>%Ln lines that are no path of a file</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::ImportFilesWindowController</name>
    <message numerus="yes">
        <source>%n duplicates</source>
        <translation>
            <numerusform>%n duplicate</numerusform>
            <numerusform>%n duplicates</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n lines that are no TIFF files</source>
        <translation>
            <numerusform>%n line that is no TIFF file</numerusform>
            <numerusform>%n lines that are no TIFF files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n files that do not exist</source>
        <translation>
            <numerusform>%n file that does not exist</numerusform>
            <numerusform>%n files that do not exist</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::ListCommands</name>
    <message numerus="yes">
        <source>Remove %n File(s)</source>
        <translation>
            <numerusform>Remove %n File</numerusform>
            <numerusform>Remove %n Files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Remove %n Converted File(s)</source>
        <translation>
            <numerusform>Remove %n Converted File</numerusform>
            <numerusform>Remove %n Converted Files</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::ListEditor</name>
    <message numerus="yes">
        <source>Tick %n File(s)</source>
        <translation>
            <numerusform>Tick %n File</numerusform>
            <numerusform>Tick %n Files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Untick %n File(s)</source>
        <translation>
            <numerusform>Untick %n File</numerusform>
            <numerusform>Untick %n Files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Invert Ticks of %n File(s)</source>
        <translation>
            <numerusform>Invert Ticks of %n File</numerusform>
            <numerusform>Invert Ticks of %n Files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Move %n File(s) Up</source>
        <translation>
            <numerusform>Move %n File Up</numerusform>
            <numerusform>Move %n Files Up</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Move %n File(s) Down</source>
        <translation>
            <numerusform>Move %n File Down</numerusform>
            <numerusform>Move %n Files Down</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Move %n File(s)</source>
        <translation>
            <numerusform>Move %n File</numerusform>
            <numerusform>Move %n Files</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::LoadControl</name>
    <message numerus="yes">
        <source>%n file(s) wait until the conversion is closed</source>
        <translation>
            <numerusform>%n file waits until the conversion is closed</numerusform>
            <numerusform>%n files wait until the conversion is closed</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::PlanLine</name>
    <message numerus="yes">
        <source>, %Ln exist</source>
        <translation>
            <numerusform>, %Ln exists</numerusform>
            <numerusform>, %Ln exist</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %Ln clash</source>
        <translation>
            <numerusform>, %Ln clashes</numerusform>
            <numerusform>, %Ln clash</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln image(s)</source>
        <translation>
            <numerusform>%Ln image</numerusform>
            <numerusform>%Ln images</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::ProblemList</name>
    <message numerus="yes">
        <source>%n more are in the log only.</source>
        <translation>
            <numerusform>%n more is in the log only.</numerusform>
            <numerusform>%n more are in the log only.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::ProcessPanel</name>
    <message numerus="yes">
        <source>, %n problem(s)</source>
        <translation>
            <numerusform>, %n problem</numerusform>
            <numerusform>, %n problems</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n problem(s)</source>
        <translation>
            <numerusform>%n problem</numerusform>
            <numerusform>%n problems</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n more are in the log only.</source>
        <translation>
            <numerusform>%n more is in the log only.</numerusform>
            <numerusform>%n more are in the log only.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>pagestack::RunControl</name>
    <message numerus="yes">
        <source>and %n more</source>
        <translation>
            <numerusform>and %n more</numerusform>
            <numerusform>and %n more</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%Ln file(s)</source>
        <translation>
            <numerusform>%Ln file</numerusform>
            <numerusform>%Ln files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>, %Ln page(s)</source>
        <translation>
            <numerusform>, %Ln page</numerusform>
            <numerusform>, %Ln pages</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>: %Ln image(s) </source>
        <translation>
            <numerusform>: %Ln image </numerusform>
            <numerusform>: %Ln images </numerusform>
        </translation>
    </message>
</context>
</TS>
