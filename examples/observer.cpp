// A shape that tells whoever watches it when it moves, and two views that watch: one goes earlier
// than the shape, one stays longer.

#include "tabase/taobservable.h"
#include "tabase/taobserver.h"

#include <iostream>

namespace {

class Shape : public TaObservable
{
public:
    static constexpr auto kMoved = TaObservableMessage::eMT_1;

    void Move(double by)
    {
        m_place += by;
        NotifyObservers(kMoved, &by); // last: an observer may destroy the shape
    }
    double GetPlace() const { return m_place; }

private:
    double m_place = 0.0;
};

class View : public TaObserver
{
public:
    explicit View(Shape& shape)
        : m_shape(&shape)
    {
        Observe(shape, Shape::kMoved);
        Observe(shape, TaObservableMessage::eMT_Destroyed);
    }
    int GetPaintings() const { return m_paintings; }
    bool HasShape() const { return m_shape != nullptr; }

protected:
    void onNotify(TaObservable&, const TaObservableMessage& message, void* parameter) override
    {
        if (message.GetType() == TaObservableMessage::eMT_Destroyed) {
            m_shape = nullptr; // of the shape, only the base is left
            return;
        }
        ++m_paintings;
        std::cout << "moved by " << *static_cast<const double*>(parameter) << " to "
                  << m_shape->GetPlace() << '\n';
    }

private:
    Shape* m_shape;
    int m_paintings = 0;
};

} // namespace

int main()
{
    auto* const shape = new Shape;
    View view(*shape);
    {
        const View another(*shape);
        shape->Move(2.0); // both are told
    } // and it unsubscribes
    shape->Move(0.5);
    delete shape;
    return view.GetPaintings() == 2 && !view.HasShape() ? 0 : 1;
}
