begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
begin try
create table T (A int)
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
end
