// Shapes with type records: made by the names of their classes, as a file or a user would name
// them, asked for their kind, copied by code that does not know them, and shared.

#include "groundwork/tucheckedcast.h"
#include "groundwork/tulist.h"
#include "groundwork/tuscopedpointer.h"
#include "groundwork/tusmartpointer.h"
#include "groundwork/tuweakpointer.h"

#include <iostream>

namespace {

class Shape : public TuReferenceCounted, public virtual IObject
{
    TU_DECLARE_RTTI

public:
    virtual double GetArea() const = 0;
};

class Rectangle : public Shape
{
    TU_DECLARE_RTTI

public:
    Rectangle() = default;
    Rectangle(double width, double height)
        : m_width(width)
        , m_height(height)
    {
    }
    double GetArea() const override { return m_width * m_height; }

private:
    static IObject* CreateByFactory() { return new Rectangle; }
    static IObject* CloneByFactory(const IObject& object)
    {
        return new Rectangle(TuCheckedCast<Rectangle>(object));
    }

    double m_width = 1.0;
    double m_height = 1.0;
};

class Square final : public Rectangle
{
    TU_DECLARE_RTTI

public:
    explicit Square(double side = 2.0)
        : Rectangle(side, side)
    {
    }

private:
    static IObject* CreateByFactory() { return new Square; }
    static IObject* CloneByFactory(const IObject& object)
    {
        return new Square(TuCheckedCast<Square>(object));
    }
};

// In the sources of the classes. A Shape has no objects of its own, so nothing makes or copies one.
TU_DEFINE_RTTI_ROOT(Shape, nullptr, nullptr);
TU_DEFINE_RTTI(Rectangle, Shape, &Rectangle::CreateByFactory, &Rectangle::CloneByFactory);
TU_DEFINE_RTTI(Square, Rectangle, &Square::CreateByFactory, &Square::CloneByFactory);

/// Null where no class has that name, or one that is no shape: names come from outside.
TuSmartPointer<Shape> makeShape(const CString& className)
{
    const TuRTTI::CreateFunction create = TuRTTI::getCreate(className);
    TuScopedPointer<IObject> object(create != nullptr ? create() : nullptr);
    if (!object || !object->IsKindOf(Shape::RTTI)) {
        return nullptr;
    }
    return dynamic_cast<Shape*>(object.Detach());
}

/// A copy of the same class, whichever that is.
TuSmartPointer<Shape> copyShape(const Shape& shape)
{
    const TuRTTI::CloneFunction clone = shape.GetRTTI().GetClone();
    return clone != nullptr ? dynamic_cast<Shape*>(clone(shape)) : nullptr;
}

} // namespace

int main()
{
    TuList<TuSmartPointer<Shape>> drawing;
    for (const char16_t* name : { u"Rectangle", u"Square", u"Hexagon", u"TuString" }) {
        const TuSmartPointer<Shape> shape = makeShape(name);
        if (shape.IsNull()) {
            std::cout << CString(name).ToUtf8() << " is no shape\n";
        } else {
            drawing.Add(shape);
        }
    }

    const TuWeakPointer<Shape> selected(drawing.GetTail().Get()); // does not keep it
    TuSmartPointer<Shape> copy;
    if (const TuSmartPointer<Shape> shape = selected.Lock()) { // keeps it while it is looked at
        std::cout << "selected: a " << CString(shape->GetClassName()).ToUtf8() << " of "
                  << shape->GetArea() << '\n';
        copy = copyShape(*shape);
    }
    const bool isSquare = copy->Is(Square::RTTI) && copy->IsKindOf(Rectangle::RTTI);

    drawing.RemoveAll(); // the last references: the shapes are deleted
    std::cout << "what was selected is " << (selected.Lock().IsNull() ? "gone" : "still there")
              << ", its copy is " << (isSquare ? "a square" : "something else") << '\n';
    return isSquare && copy->GetArea() == 4.0 && selected.Lock().IsNull() ? 0 : 1;
}
