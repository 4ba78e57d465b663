#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/SerialObject.h>
#include <corvane/interfaces/IListener.h>

namespace Corvane
{

/// Place, size, order and opacity of surfaces on a screen. Each operation names the surface by an index.
class CORVANE_EXPORT ISurfaceCompositing
{
public:
    class Point;
    class Dimensions;
    class Rect;

    virtual void setVisibility(const unsigned int& index, bool visibility) = 0;
    virtual bool getVisibility(const unsigned int& index) = 0;
    /// @param opacity  0 (transparent) to 255
    virtual void setOpacity(const unsigned int& index, unsigned int opacity) = 0;
    virtual unsigned int getOpacity(const unsigned int& index) = 0;
    /// @param zOrder  position in the stack; a greater one is nearer to the viewer
    virtual void setZOrder(const unsigned int& index, unsigned int zOrder) = 0;
    virtual unsigned int getZOrder(const unsigned int& index) = 0;
    virtual void setLocation(const unsigned int& index, const Rect& location) = 0;
    virtual Rect getLocation(const unsigned int& index) = 0;
    virtual void bringToFront(const unsigned int& index) = 0;
    virtual void sendToBack(const unsigned int& index) = 0;
    virtual void bringForward(const unsigned int& index) = 0;
    virtual void sendBackward(const unsigned int& index) = 0;
    virtual ~ISurfaceCompositing() = default;

    class CORVANE_EXPORT ISurfaceCompositingListener : public virtual IListener
    {
    };
};

/// A position in pixels.
class CORVANE_EXPORT ISurfaceCompositing::Point : public virtual SerialObject
{
public:
    Point(int x, int y);
    /// Reads the members "x" and "y" of the deserializer's current object.
    explicit Point(Deserializer& deserializer);
    Point(const Point& other) : SerialObject(other), x(other.x), y(other.y) {}
    Point& operator=(const Point& other)
    {
        x = other.x;
        y = other.y;
        return *this;
    }

    int getX() const;
    int getY() const;
    /// The sum by coordinates; wraps at 32 bits.
    Point operator+(const Point& other) const;

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~Point() override;

private:
    int x;
    int y;
};

/// A size in pixels.
class CORVANE_EXPORT ISurfaceCompositing::Dimensions : public virtual SerialObject
{
public:
    Dimensions(unsigned int width, unsigned int height);
    /// Reads the members "width" and "height" of the deserializer's current object.
    explicit Dimensions(Deserializer& deserializer);
    Dimensions(const Dimensions& other) : SerialObject(other), width(other.width), height(other.height) {}
    Dimensions& operator=(const Dimensions& other)
    {
        width = other.width;
        height = other.height;
        return *this;
    }

    unsigned int getWidth() const;
    unsigned int getHeight() const;

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~Dimensions() override;

private:
    unsigned int width;
    unsigned int height;
};

/// A rectangle: its top-left point and its size.
class CORVANE_EXPORT ISurfaceCompositing::Rect : public Point, public Dimensions
{
public:
    Rect(int x, int y, unsigned int width, unsigned int height);
    Rect(const Point& point, const Dimensions& dimensions);
    /// Reads the members "x", "y", "width" and "height" of the deserializer's current object.
    explicit Rect(Deserializer& deserializer);
    Rect(const Rect& other) : SerialObject(other), Point(other), Dimensions(other) {}
    Rect& operator=(const Rect& other)
    {
        Point::operator=(other);
        Dimensions::operator=(other);
        return *this;
    }

    Point getPoint() const;
    Dimensions getDimensions() const;

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~Rect() override;
};

/// Reads the member `name` as a rectangle: enters it, reads it, leaves it.
template <>
inline ISurfaceCompositing::Rect deserialize<ISurfaceCompositing::Rect>(const std::string& name,
                                                                        Deserializer& deserializer)
{
    deserializer.enterMember(name);
    ISurfaceCompositing::Rect result(deserializer);
    deserializer.leaveMember(name);
    return result;
}

} // namespace Corvane
