#pragma once

#include <QScrollArea>

namespace pagestack {

/// A page that scrolls up and down where it is too high, and is never narrower than what it shows.
class TallPage : public QScrollArea
{
    Q_OBJECT

public:
    explicit TallPage(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    /// The page has the colour of what it stands in.
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] int leastWidth() const;
};

} // namespace pagestack
