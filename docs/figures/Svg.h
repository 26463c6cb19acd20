// A drawing, written as SVG: just what the figures need.
#pragma once

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace figures {

inline constexpr const char* kInk = "#222222";
inline constexpr const char* kFaint = "#bbbbbb";
inline constexpr const char* kGrey = "#777777";
inline constexpr const char* kBlue = "#0072b2";
inline constexpr const char* kOrange = "#d55e00";
inline constexpr const char* kGreen = "#009e73";

/// Two decimals, without trailing zeros.
inline std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    std::string result = text;
    result.erase(result.find_last_not_of('0') + 1);
    if (result.back() == '.')
        result.pop_back();
    return result == "-0" ? "0" : result;
}

struct Point {
    double x;
    double y;
};

struct Box {
    double x;
    double y;
    double width;
    double height;
};

class Svg {
public:
    Svg(double width, double height)
        : body("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + number(width) + " " +
               number(height) + "\" width=\"" + number(width) + "\" height=\"" + number(height) +
               "\" font-family=\"Helvetica, Arial, sans-serif\" font-size=\"13\">\n")
    {
        box({0, 0, width, height}, "#ffffff", "none");
        body +=
            "<marker id=\"tip\" viewBox=\"0 0 8 8\" refX=\"8\" refY=\"4\" markerWidth=\"8\" "
            "markerHeight=\"8\" orient=\"auto\"><path d=\"M0 0L8 4L0 8z\" fill=\"#222222\"/>"
            "</marker>\n";
    }

    void box(Box b, const std::string& fill, const std::string& stroke, const char* extra = "")
    {
        body += "<rect" + attribute("x", b.x) + attribute("y", b.y) + attribute("width", b.width) +
                attribute("height", b.height) + paint(fill, stroke) + extra + "/>\n";
    }

    void line(Point from, Point to, const std::string& stroke, const char* extra = "")
    {
        body += "<line" + attribute("x1", from.x) + attribute("y1", from.y) +
                attribute("x2", to.x) + attribute("y2", to.y) + paint("none", stroke) + extra +
                "/>\n";
    }

    void dot(Point centre, double radius, const std::string& fill, const std::string& stroke)
    {
        body += "<circle" + attribute("cx", centre.x) + attribute("cy", centre.y) +
                attribute("r", radius) + paint(fill, stroke) + "/>\n";
    }

    void curve(const std::vector<Point>& points, const std::string& stroke)
    {
        std::string list;
        for (const Point& p : points)
            list += number(p.x) + "," + number(p.y) + " ";
        list.pop_back();
        body += "<polyline points=\"" + list + "\"" + paint("none", stroke) +
                " stroke-width=\"2\" stroke-linejoin=\"round\"/>\n";
    }

    void path(const std::string& commands, const std::string& fill, const std::string& stroke,
              const char* extra = "")
    {
        body += "<path d=\"" + commands + "\"" + paint(fill, stroke) + extra + "/>\n";
    }

    /// `anchor` is start, middle or end.
    void text(Point at, const char* anchor, const std::string& words,
              const std::string& fill = kInk, const char* extra = "")
    {
        body += "<text" + attribute("x", at.x) + attribute("y", at.y) + " text-anchor=\"" + anchor +
                "\" fill=\"" + fill + "\"" + extra + ">" + words + "</text>\n";
    }

    /// Whether the file could be written.
    bool save(const std::string& file) const
    {
        std::ofstream out(file);
        out << body << "</svg>\n";
        return static_cast<bool>(out.flush());
    }

private:
    static std::string attribute(const char* name, double value)
    {
        return std::string(" ") + name + "=\"" + number(value) + "\"";
    }

    static std::string paint(const std::string& fill, const std::string& stroke)
    {
        return " fill=\"" + fill + "\" stroke=\"" + stroke + "\"";
    }

    std::string body;
};

}  // namespace figures
