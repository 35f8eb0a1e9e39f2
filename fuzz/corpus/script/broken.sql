create table T (A int B int)
print 'x
