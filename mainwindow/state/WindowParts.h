#pragma once

class QMainWindow;

namespace Ui {
class MainWindow;
}

namespace pagestack {

class FileList;
class FileTableModel;
class ViewState;
class Worker;
struct Services;

/// What those who carry out the commands of the window share. The controller owns all of it, and
/// all of it outlives them.
struct WindowParts
{
    QMainWindow& window;
    Ui::MainWindow& ui;
    const Services& services;
    FileList& files;
    FileTableModel& model;
    ViewState& view;
    Worker& worker;
};

} // namespace pagestack
