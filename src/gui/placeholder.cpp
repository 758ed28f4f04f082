// The window's library; its classes arrive with the window.
namespace corvanet::gui {}
